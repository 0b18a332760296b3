// SPDX-License-Identifier: Apache-2.0
// Any file as a scenario: it is taken whole or refused whole, with a sentence that says where and why, makes the same
// world each time, and plays to its end.
#include "MemoryFile.h"

#include <simulator/scenarios/Scenario.h>
#include <zelcore/Simulator.h>

#include <cstdint>
#include <limits>

using namespace Qt::StringLiterals;

using zelcore::Scenario;
using zelcore::Simulator;

namespace {

/// Whatever its commands show of the world.
QString worldOf(Simulator& simulator)
{
    QString world;
    for (const char16_t* const command :
         {u"profile", u"contacts", u"box", u"state", u"registered", u"permission showAppBox off", u"clients"}) {
        QString reply;
        simulator.execute(QString::fromUtf16(command), &reply);
        world += reply + u'\n';
    }
    return world;
}

/// People are made up as they are asked for; so many that there is no room for them is the user's own affair.
bool isCrowded(const Scenario& scenario)
{
    int people = 0;
    for (const Scenario::Step& step : scenario.world + scenario.timeline)
        people += step.words.value(0) == "generate"_L1 ? qBound(0, step.words.value(1).toInt(), 1000) : 0;
    return people > 100;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    beginQuietly();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile file(QByteArrayView(data, static_cast<qsizetype>(size)));
    QString problem;
    const std::optional<Scenario> scenario = Scenario::load(file.path(), &problem);
    require(scenario.has_value() == problem.isEmpty(), "what cannot be read has a problem");
    if (scenario && isCrowded(*scenario))
        return 0;
    Simulator simulator;
    const QString before = worldOf(simulator);
    QString error;
    if (!simulator.loadScenario(file.path(), &error)) {
        require(error.startsWith(file.path() + u": "_s), "the sentence names the file");
        require(!scenario || error.startsWith(file.path() + u": line "_s), "and where in it");
        require(worldOf(simulator) == before, "it is refused whole");
        return 0;
    }
    Simulator other;
    require(scenario && other.loadScenario(file.path()), "it is taken again");
    require(worldOf(other) == worldOf(simulator), "it makes the same world each time");
    require(simulator.start(), "the service starts");
    simulator.setTimelinePaused(true);
    simulator.runTimelineUntil(std::numeric_limits<int>::max());
    worldOf(simulator);
    return 0;
}
