// SPDX-License-Identifier: Apache-2.0
#include "OneShot.h"

#include "Commands.h"
#include "Advice.h"
#include "Output.h"
#include "Session.h"

#include <common/Printable.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>

#include <cstdio>

#include <unistd.h>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

/// What the library warns of while this lives, which is a request that can never work. It is not printed.
class Warnings
{
public:
    Warnings()
    {
        s_current = this;
        s_otherHandler = qInstallMessageHandler(&Warnings::take);
    }
    ~Warnings() { qInstallMessageHandler(s_otherHandler); }
    Q_DISABLE_COPY_MOVE(Warnings)

    /// The first, without the class and the call.
    QString reason() const { return m_first.section(": "_L1, 1); }

private:
    static void take(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        if (type != QtWarningMsg || qstrcmp(context.category, "zel.platform") != 0)
            s_otherHandler(type, context, message);
        else if (s_current->m_first.isEmpty())
            s_current->m_first = message;
    }

    static inline Warnings* s_current = nullptr;
    static inline QtMessageHandler s_otherHandler = nullptr;
    QString m_first;
};

} // namespace

OneShot::OneShot(Session& session, Output& output, const Command& command, const Arguments& arguments, int timeout,
                 QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_output(output)
    , m_command(command)
    , m_arguments(arguments)
    , m_timeout(timeout)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &OneShot::onTimeout);
    connect(&m_patience, &QTimer::timeout, this, &OneShot::showPatience);
    connect(&m_session, &Session::signalled, this, &OneShot::onSignal);
    connect(&m_session, &Session::liveObjectsMade, this, &OneShot::onLive);
    connect(&m_session, &Session::saved, this, [this](const QString& sentence) { m_saved = sentence; });
    connect(&m_session, &Session::saveFailed, this, &OneShot::fail);
}

bool OneShot::registers() const
{
    return m_command.name == "register"_L1;
}

void OneShot::start()
{
    if (m_session.hasService()) {
        m_timer.start(m_timeout);
        if (m_output.format() == Output::Format::People && ::isatty(STDERR_FILENO))
            m_patience.start(1000);
        return;
    }
    if (m_command.needs == Needs::State && !registers())
        m_output.answer(m_command.name, m_command.run(m_session, m_arguments).record);
    fail(whyNoService());
}

void OneShot::onSignal(const Record& record)
{
    hidePatience();
    const bool isState = record.textOf(u"source"_s) == "Context"_L1;
    if (isState && registers() && m_phase != Phase::Done)
        m_output.signal(record);
    if (isState && (m_phase == Phase::State || m_phase == Phase::Registration))
        onState();
    else if (m_phase == Phase::Contacts && record.textOf(u"signal"_s) == "contactListUpdated"_L1 &&
             m_session.contacts().isComplete())
        QMetaObject::invokeMethod(this, &OneShot::act, Qt::QueuedConnection);
    else if (m_phase == Phase::Outcome)
        onOutcome(record);
}

/// The state is the service's last word, which may be newer than the one in the signal.
void OneShot::onState()
{
    const RegistrationState::Type state = m_session.context().registrationState();
    const bool first = m_phase == Phase::State;
    if (first && m_command.needs == Needs::State && !registers()) {
        act();
        return;
    }
    m_phase = Phase::Registration;
    if (state == RegistrationState::Allowed) // the live objects follow at once
        return;
    if (first && state != RegistrationState::Pending)
        requestRegistration();
    else if (state != RegistrationState::Pending && state != RegistrationState::Unregistered)
        fail(whyNotRegistered(state));
}

void OneShot::requestRegistration()
{
    if (registers()) {
        const Answer answer = m_command.run(m_session, m_arguments);
        if (m_output.format() == Output::Format::JsonLines)
            m_output.request(m_command.name, answer.ok.value_or(false));
        if (!answer.ok.value_or(false))
            fail(whyNotRegistered(m_session.context().registrationState()));
    } else if (!m_session.context().requestRegisterApplication()) {
        fail(whyNotRegistered(m_session.context().registrationState()));
    }
}

void OneShot::onLive()
{
    if (m_phase == Phase::Done)
        return;
    if (registers()) {
        m_output.sentence(u"Registered."_s);
        finish(0);
    } else if (m_command.needs == Needs::Contacts) {
        m_phase = Phase::Contacts;
    } else if (m_command.needs == Needs::Access) {
        // Not in the slot: what arrived together with the registration is worth waiting for.
        QMetaObject::invokeMethod(this, &OneShot::act, Qt::QueuedConnection);
    }
}

void OneShot::act()
{
    if (m_phase >= Phase::Outcome)
        return;
    m_phase = Phase::Outcome;
    hidePatience();
    if (const QString objection = objectionTo(m_command, m_arguments, m_session); !objection.isEmpty()) {
        fail(objection);
        return;
    }
    const Outcome& outcome = m_command.outcome;
    const bool settled = outcome.settled && outcome.settled(m_session, m_arguments);
    QString whyNever;
    const Answer answer = [&] {
        const Warnings warnings;
        const Answer given = m_command.run(m_session, m_arguments);
        whyNever = warnings.reason();
        return given;
    }();
    if (!answer.failure.isEmpty()) {
        fail(answer.failure);
        return;
    }
    if (!answer.ok) {
        m_output.answer(m_command.name, answer.record);
        finish(0);
        return;
    }
    if (m_output.format() == Output::Format::JsonLines)
        m_output.request(m_command.name, *answer.ok);
    if (!whyNever.isEmpty())
        fail(u"The request was refused: %1."_s.arg(whyNever));
    else if (!*answer.ok)
        fail(u"The request was refused: %1."_s.arg(outcome.takes.isEmpty() ? u"access is not allowed"_s
                                                                           : outcome.takes));
    else if (outcome.signal.isEmpty() && m_waitsForDelivery)
        m_phase = Phase::Delivery;
    else if (outcome.signal.isEmpty() || settled)
        succeed({});
}

void OneShot::onOutcome(const Record& record)
{
    const Outcome& outcome = m_command.outcome;
    if (record.textOf(u"source"_s) + u'.' + record.textOf(u"signal"_s) != outcome.signal)
        return;
    if (!outcome.key.isEmpty() && record.textOf(outcome.key) != m_arguments.text(0))
        return;
    if (m_output.format() == Output::Format::JsonLines)
        m_output.signal(record);
    if (!outcome.settled || outcome.settled(m_session, m_arguments))
        succeed(record);
}

void OneShot::delivered()
{
    if (m_phase == Phase::Delivery)
        succeed({});
    m_waitsForDelivery = false; // it may arrive while the request is still being handed over
}

void OneShot::succeed(const Record& signal)
{
    const QStringList forms = m_command.outcome.sentence.split(u'|');
    bool hasNothing = false;
    QString text = fill(forms.first(), signal, &hasNothing);
    if (hasNothing)
        text = fill(forms.last(), signal, &hasNothing);
    m_output.sentence(text);
    if (!m_saved.isEmpty())
        m_output.sentence(m_saved);
    finish(0);
}

void OneShot::refuse(const QString& why)
{
    if (m_phase == Phase::Outcome)
        fail(u"The service refused: %1."_s.arg(why));
}

void OneShot::fail(const QString& sentence)
{
    if (m_phase == Phase::Done)
        return;
    hidePatience();
    m_output.diagnostic(sentence);
    finish(1);
}

void OneShot::finish(int exitStatus)
{
    if (m_phase == Phase::Done)
        return;
    m_phase = Phase::Done;
    m_timer.stop();
    m_patience.stop();
    QMetaObject::invokeMethod(
        this, [this, exitStatus] { Q_EMIT finished(exitStatus); }, Qt::QueuedConnection);
}

void OneShot::showPatience()
{
    // To read the list anew is to count how far it has come.
    QString soFar;
    if (m_phase == Phase::Contacts && m_session.contacts().refresh())
        soFar = u", %1 so far"_s.arg(m_session.contacts().contactCount());
    const char* const what = m_phase == Phase::State          ? "the registration state"
                             : m_phase == Phase::Registration ? "the registration"
                             : m_phase == Phase::Contacts     ? "the contacts"
                                                              : "the answer";
    std::fprintf(stderr, "\r\033[KWaiting for %s, %d s%s", what, (m_timeout - m_timer.remainingTime()) / 1000,
                 qPrintable(soFar));
}

void OneShot::hidePatience() const
{
    if (m_patience.isActive())
        std::fputs("\r\033[K", stderr);
}

void OneShot::interrupt()
{
    fail(u"Interrupted."_s);
}

void OneShot::onTimeout()
{
    const QString seconds = u"within %1 s"_s.arg(m_timeout / 1000.0);
    if (m_phase == Phase::State) {
        if (m_command.needs == Needs::State && !registers())
            m_output.answer(m_command.name, m_command.run(m_session, m_arguments).record);
        fail(u"The service did not tell the registration state %1."_s.arg(seconds));
    } else if (m_phase == Phase::Registration) {
        fail(u"The registration had no outcome %1; the last state was %2."_s.arg(
            seconds, stateRecord(m_session).textOf(u"registrationState"_s)));
    } else if (m_phase == Phase::Contacts) {
        fail(u"The contact list was not complete %1."_s.arg(seconds));
    } else {
        const QString& takes = m_command.outcome.takes;
        fail(u"The service did not answer %1; %2."_s.arg(
            seconds, takes.isEmpty() ? u"ZEL_SLOG=stderr shows what the library has to say"_s : takes));
    }
}

QString OneShot::fill(const QString& sentence, const Record& signal, bool* hasNothing) const
{
    QString text;
    qsizetype at = 0;
    for (qsizetype open; (open = sentence.indexOf(u'{', at)) >= 0;) {
        const qsizetype close = sentence.indexOf(u'}', open);
        const QString name = sentence.mid(open + 1, close - open - 1);
        bool isArgument = false;
        const int number = name.toInt(&isArgument);
        const QString value = isArgument ? m_arguments.text(number) : signal.textOf(name);
        *hasNothing = *hasNothing || (!isArgument && (value.isEmpty() || value == "0"_L1));
        text += QStringView(sentence).mid(at, open - at);
        text += zeltools::printable(value);
        at = close + 1;
    }
    return text + sentence.mid(at);
}

} // namespace zelctl
