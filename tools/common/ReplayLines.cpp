// SPDX-License-Identifier: Apache-2.0
#include <common/ReplayLines.h>

#include <zelcore/Simulator.h>

using namespace Qt::StringLiterals;

namespace zeltools {

void tellOfReplay(zelcore::Simulator& simulator, QObject* context,
                  const std::function<void(const QString& line, bool isDifference)>& tell)
{
    using zelcore::Simulator;
    QObject::connect(&simulator, &Simulator::replayDiffered, context,
                     [tell](const QString& sentence) { tell(u"replay: "_s + sentence, true); });
    QObject::connect(&simulator, &Simulator::replayFinished, context, [tell, &simulator] {
        const auto differences = simulator.replayDifferences().size();
        tell(u"replay: all of it has been played; differences: %1"_s.arg(differences), false);
    });
}

} // namespace zeltools
