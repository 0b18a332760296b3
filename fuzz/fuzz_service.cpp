// SPDX-License-Identifier: Apache-2.0
// A core service that sends anything, and an application whose slots do anything: nothing crashes, what the application
// is shown agrees, and a service that is sound again is understood.
//
// An input is a text, a step a line; its first byte says what happens:
//
//     m   a message, see service/Messages.h          a   a request of the application, see service/Application.cpp
//     j   a message, the rest of the line is JSON    o   a public object is destroyed or made again
//     r   a record, | stands for a line break        s   how the next slots behave, a byte a slot: g reads everything,
//     y   all requests are answered properly             n runs the steps that follow in an event loop of its own,
//     t   a turn of the event loop                       d destroys the object that signals, r makes it again, ...
//     i   turns until nothing is left to do          x   leaves that event loop
//     c   time passes                                g   the application reads everything
//     l   logs and traces are on from now on, and go nowhere
#include "Fuzzing.h"
#include "service/Application.h"
#include "service/Bindings.h"
#include "service/Core.h"

#include <common/FakeClock.h>

#include <iface/Realm.h>
#include <platform/channel/ServiceBridge.h>

#include <slog/reload.h>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QLoggingCategory>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

using namespace vx::platform::zel;

namespace {

void setLogging(bool on)
{
    ::setenv("ZEL_SLOG_LEVEL", on ? "7" : "-1", 1);
    slog_reload();
    QLoggingCategory::setFilterRules(on ? u"zel.*.debug=true"_s : QString());
}

void settle()
{
    constexpr int mostTurns = 20000;
    int turns = 0;
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents))
        require(++turns < mostTurns, "nothing keeps the event loop busy for ever");
    Core::instance().takeRequests();
}

/// One input at work.
class Session
{
public:
    Session(QByteArrayView text, FakeClock& clock)
        : m_script(text)
        , m_clock(clock)
        , m_application([this] { runNested(); })
    {
    }

    ~Session()
    {
        if (m_isLogging)
            setLogging(false);
    }

    void run()
    {
        runSteps();
        settle();
        m_application.requireConsistency();
        recover();
        m_application.requireConsistency();
    }

private:
    void runNested()
    {
        constexpr int deepest = 6;
        if (m_depth == deepest)
            return;
        ++m_depth;
        runSteps();
        --m_depth;
    }

    void runSteps()
    {
        while (!m_script.atEnd()) {
            Line line = m_script.next();
            const char what = line.take();
            if (what == 'x' && m_depth > 0)
                return;
            step(what, line);
        }
    }

    void step(char what, Line line)
    {
        Core& core = Core::instance();
        switch (what) {
        case 'm':
            core.sendMessage(line);
            return settle();
        case 'M': // and the next one arrives before it is read
            return core.sendMessage(line);
        case 'j':
            core.sendMessage(line.rest().toByteArray());
            return settle();
        case 'r':
            core.send(line.rest().toByteArray().replace('|', '\n'));
            return settle();
        case 'y':
            return answerAll(line.take());
        case 't':
            QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents);
            return;
        case 'i':
            return settle();
        case 'c':
            m_clock.advance((line.take() & 15) * 30 * 1000);
            return core.takeRequests();
        case 'a':
            m_application.request(line);
            return core.takeRequests();
        case 'o':
            return m_application.replace(line);
        case 's':
            return m_application.armSlots(line.rest());
        case 'g':
            return m_application.readEverything();
        case 'l':
            m_isLogging = true;
            return setLogging(true);
        default:
            return;
        }
    }

    void answerAll(char contacts)
    {
        constexpr int mostRounds = 20;
        settle();
        for (int round = 0; round < mostRounds; ++round) {
            if (!Core::instance().answerRequests(contacts == 'M' ? 50 : (contacts - '0') & 15))
                return;
            settle();
        }
    }

    /// Whatever came before, a service that is sound again is understood.
    void recover()
    {
        m_application.disarmSlots();
        m_clock.advance(5 * 60 * 1000); // what was never answered has been asked for again by then
        answerAll('2');
        Core::instance().announceEverything();
        answerAll('2');
        m_application.requireEverything();
    }

    Script m_script;
    FakeClock& m_clock;
    int m_depth = 0;
    bool m_isLogging = false;
    Application m_application;
};

/// Leaves the library as in a new process: the two that are one for the process are destroyed and made again in place.
void renewLibrary()
{
    Services* const services = Services::getServices();
    ServiceBridge* const bridge = ServiceBridge::instance();
    std::destroy_at(bridge);
    std::destroy_at(services);
    iface::Realm::defaultRealm.setLocalData({});
    Core::instance().reset();
    std::construct_at(services, QSharedPointer<zelsplib::PPSManager>::create(u"/pps/services/zelcore/platform"_s,
                                                                             u"platform"_s, u"zel"_s));
    std::construct_at(bridge, nullptr);
}

} // namespace

/// The system log, which takes everything and keeps nothing.
extern "C" void syslog(int, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    char line[256];
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    beginQuietly();
    setLogging(false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QSharedPointer<FakeClock> clock = FakeClock::install();
    Session(QByteArrayView(data, static_cast<qsizetype>(size)), *clock).run();
    renewLibrary();
    return 0;
}
