// SPDX-License-Identifier: Apache-2.0
#include "OneShot.h"

#include "Commands.h"
#include "Objections.h"
#include "Output.h"
#include "Requests.h"
#include "Session.h"

#include <vx/platform/zel/Context.h>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

namespace zelctl {

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
    connect(&m_session, &Session::signalled, this, &OneShot::onSignal);
    connect(&m_session, &Session::liveObjectsMade, this, &OneShot::onLive);
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
        return;
    }
    if (m_command.needs == Needs::State && !registers())
        m_output.answer(m_command.name, m_command.run(m_session, m_arguments).record);
    fail(whyNoService());
}

void OneShot::onSignal(const Record& record)
{
    const bool isState = record.textOf("source"_L1) == "Context"_L1;
    if (isState && registers() && m_phase != Phase::Done)
        m_output.signal(record);
    if (isState && (m_phase == Phase::State || m_phase == Phase::Registration))
        onState();
    else if (m_phase == Phase::Contacts && record.textOf("signal"_L1) == "contactListUpdated"_L1)
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
    if (m_phase == Phase::Outcome || m_phase == Phase::Delivery || m_phase == Phase::Done)
        return;
    m_phase = Phase::Outcome;
    const Outcome& outcome = m_command.outcome;
    if (const QString objection = outcome.objection ? outcome.objection(m_session, m_arguments) : QString();
        !objection.isEmpty()) {
        fail(objection);
        return;
    }
    const bool settled = outcome.settled && outcome.settled(m_session, m_arguments);
    const Answer answer = m_command.run(m_session, m_arguments);
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
    if (!*answer.ok)
        fail(u"The request was refused: %1."_s.arg(outcome.refused.isEmpty() ? "access is not allowed"_L1
                                                                             : outcome.refused));
    else if (outcome.signal.isEmpty() && m_waitsForDelivery)
        m_phase = Phase::Delivery;
    else if (outcome.signal.isEmpty() || settled)
        succeed({});
}

void OneShot::onOutcome(const Record& record)
{
    const Outcome& outcome = m_command.outcome;
    if (record.textOf("source"_L1) != outcome.source || record.textOf("signal"_L1) != outcome.signal)
        return;
    if (!outcome.key.isEmpty() && record.textOf(outcome.key) != m_arguments.text(0))
        return;
    if (m_output.format() == Output::Format::JsonLines)
        m_output.signal(record);
    if (!outcome.untilSettled || outcome.settled(m_session, m_arguments))
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
    const Outcome& outcome = m_command.outcome;
    const QString found = outcome.member.isEmpty() ? QString() : signal.textOf(outcome.member);
    const bool hasNothing = !outcome.member.isEmpty() && (found.isEmpty() || found == "0"_L1);
    m_output.sentence(fill(hasNothing ? outcome.nothing : outcome.sentence, signal));
    finish(0);
}

void OneShot::fail(const QString& sentence)
{
    if (m_phase == Phase::Done)
        return;
    m_output.diagnostic(sentence);
    finish(1);
}

void OneShot::finish(int exitStatus)
{
    if (m_phase == Phase::Done)
        return;
    m_phase = Phase::Done;
    m_timer.stop();
    QMetaObject::invokeMethod(
        this, [this, exitStatus] { Q_EMIT finished(exitStatus); }, Qt::QueuedConnection);
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
            seconds, stateRecord(m_session).textOf("registrationState"_L1)));
    } else if (m_phase == Phase::Contacts) {
        fail(u"The contact list was not complete %1."_s.arg(seconds));
    } else {
        const QLatin1String why = m_command.outcome.unanswered;
        fail(u"The service did not answer %1; %2"_s.arg(
            seconds, why.isEmpty() ? "ZEL_SLOG=stderr shows what the library has to say."_L1 : why));
    }
}

QString OneShot::fill(QLatin1String sentence, const Record& signal) const
{
    QString text;
    const QString pattern = sentence;
    qsizetype at = 0;
    for (qsizetype open; (open = pattern.indexOf(u'{', at)) >= 0;) {
        const qsizetype close = pattern.indexOf(u'}', open);
        const QString name = pattern.mid(open + 1, close - open - 1);
        bool isArgument = false;
        const int number = name.toInt(&isArgument);
        text += QStringView(pattern).mid(at, open - at);
        text += printable(isArgument ? m_arguments.text(number) : signal.textOf(QLatin1String(name.toLatin1())));
        at = close + 1;
    }
    return text + pattern.mid(at);
}

} // namespace zelctl
