// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/CommandForms.h>

#include <simulator/SimulatorPrivate.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTimer>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

Answer showTimeline(SimulatorPrivate& simulator, const QStringList&)
{
    return say(
        u"%1 ms%2"_s.arg(simulator.timeline.time()).arg(simulator.timeline.isPaused() ? u", paused"_s : QString()));
}

// --- Trouble -----------------------------------------------------------------------------------------------------

using Direction = WireRecord::Direction;
constexpr Direction in = Direction::FromApplication;
constexpr Direction out = Direction::ToApplication;

template <Direction direction, Simulator::Fault kind>
Answer orderFault(SimulatorPrivate& simulator, const Addressee& whose, const QStringList& args)
{
    const bool hasAmount = kind == Simulator::Fault::Delay || kind == Simulator::Fault::Truncate;
    simulator.way(direction).addFault(kind, hasAmount ? args.first().toInt() : 0, args.value(hasAmount ? 1 : 0), whose);
    return {};
}

template <Direction direction>
Answer setLatency(SimulatorPrivate& simulator, const Addressee& whose, const QStringList& args)
{
    simulator.way(direction).setLatency(args.first().toInt(), whose);
    return {};
}

template <Direction direction>
Answer showLatency(SimulatorPrivate& simulator, const Addressee& whose, const QStringList&)
{
    return say(u"%1 ms"_s.arg(simulator.way(direction).latencyOf(whose)));
}

using TargetState = Simulator::TargetState;
constexpr std::pair<TargetState, QLatin1StringView> targetStates[] = {
    {TargetState::Taking, "takes"_L1}, {TargetState::Refusing, "refuses"_L1}, {TargetState::Missing, "missing"_L1}};

Answer showTargets(SimulatorPrivate& simulator, const QStringList&)
{
    QList<QStringList> rows;
    const QStringList names = InvocationTargets::names();
    for (const QString& name : names) {
        for (const auto& [state, word] : targetStates) {
            if (simulator.targets.state(name) == state)
                rows.append({name, word});
        }
    }
    return say(table(rows).chopped(1));
}

Answer setTarget(SimulatorPrivate& simulator, const QStringList& args)
{
    const auto named = std::find_if(std::begin(targetStates), std::end(targetStates),
                                    [&](const auto& row) { return row.second == args.last(); });
    return outcomeOf(simulator.targets.setState(args.first(), named->first));
}

Answer sendMessage(SimulatorPrivate& simulator, const Addressee& whose, const QStringList& args)
{
    const QJsonObject body = QJsonDocument::fromJson(args.last().toUtf8()).object();
    return outcomeOf(simulator.service.sendMessage(args.first(), body, whose));
}

Answer comeBack(SimulatorPrivate& simulator, const QStringList&)
{
    QString problem;
    simulator.comeBack(&problem);
    return outcomeOf(problem);
}

Answer goAway(SimulatorPrivate& simulator, const QStringList& args)
{
    simulator.goAway();
    if (!args.isEmpty()) {
        QTimer::singleShot(args.first().toInt(), simulator.q, [d = &simulator] {
            QString problem;
            if (d->running && !d->comeBack(&problem))
                d->refuse(problem);
        });
    }
    return {};
}

using Fault = Simulator::Fault;
using S = SimulatorPrivate;
using A = QStringList;

const Form forms[] = {
    {u"timeline", u"", u"how far the scenario's timeline is", showTimeline},
    {u"timeline pause", u"", u"its clock stands still",
     [](S& s, const A&) { return s.timeline.setPaused(true), Answer(); }},
    {u"timeline step", u"", u"pauses, and runs the next entry",
     [](S& s, const A&) { return outcomeOf(s.timeline.step()); }},
    {u"timeline until", u"MS", u"pauses, and runs all up to MS",
     [](S& s, const A& args) { return say(u"%1 entries"_s.arg(s.timeline.runUntil(args.first().toInt()))); }},
    {u"timeline go", u"", u"on by the clock", [](S& s, const A&) { return s.timeline.setPaused(false), Answer(); }},
    {u"drop", u"[TYPE]", u"the next message (of a type) is lost", orderFault<out, Fault::Drop>},
    {u"delay", u"MS [TYPE]", u"... comes late, after others", orderFault<out, Fault::Delay>},
    {u"duplicate", u"[TYPE]", u"... comes twice", orderFault<out, Fault::Duplicate>},
    {u"truncate", u"BYTES [TYPE]", u"... is cut", orderFault<out, Fault::Truncate>},
    {u"garble", u"[TYPE]", u"... is unreadable", orderFault<out, Fault::Garble>},
    {u"latency", u"", u"how long messages take at least", showLatency<out>},
    {u"latency", u"MS", u"all take so long, in their order", setLatency<out>},
    {u"request drop", u"[TYPE]", u"an application's next one is lost", orderFault<in, Fault::Drop>},
    {u"request delay", u"MS [TYPE]", u"... comes late, after others", orderFault<in, Fault::Delay>},
    {u"request duplicate", u"[TYPE]", u"... comes twice", orderFault<in, Fault::Duplicate>},
    {u"request truncate", u"BYTES [TYPE]", u"... is cut", orderFault<in, Fault::Truncate>},
    {u"request garble", u"[TYPE]", u"... is unreadable", orderFault<in, Fault::Garble>},
    {u"request latency", u"", u"how long theirs take at least", showLatency<in>},
    {u"request latency", u"MS", u"all take so long, in their order", setLatency<in>},
    {u"refuse", u"TYPE [WHY]", u"refuses the next, though it is right",
     [](S& s, const Addressee& whose, const A& args) {
         return s.service.refuseNext(args.first(), args.value(1), whose), Answer();
     }},
    {u"reading", u"", u"whether the service reads",
     [](S& s, const A&) { return say(s.server.isReading() ? u"on"_s : u"off"_s); }},
    {u"reading", u"on|off", u"whether the service reads at all",
     [](S& s, const A& args) { return s.server.setReading(args.first() == "on"_L1), Answer(); }},
    {u"target", u"", u"how invocation targets are met", showTargets},
    {u"target", u"TARGET takes|refuses|missing", u"how an invocation target is met", setTarget},
    {u"send", u"TYPE JSON", u"sends any message to applications", sendMessage},
    {u"raw", u"TEXT", u"sends any record",
     [](S& s, const Addressee& whose, const A& args) {
         return outcomeOf(s.service.sendRecord(args.first().toUtf8(), whose));
     }},
    {u"away", u"[MS]", u"the service goes away (for so long)", goAway},
    {u"back", u"", u"it returns", comeBack},
    {u"reset", u"", u"all as in the beginning; connections drop", [](S& s, const A&) { return s.reset(), Answer(); }},
    {u"quit", u"", u"ends the program", [](S& s, const A&) { return s.q->quitRequested(), Answer(); }},
};

} // namespace

std::span<const Form> wireForms()
{
    return forms;
}

} // namespace zelcore
