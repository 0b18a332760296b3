// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

namespace zeldesk {

bool Desk::begin(const zeltools::ServiceOptions& options, QString* problem)
{
    if (!options.makeWorld(m_simulator, problem) || !options.serve(m_simulator, problem))
        return false;
    if (!options.scenario.isEmpty())
        m_timeline.opened(options.scenario);
    if (!options.record.isEmpty())
        m_service.recordsInto(options.record);
    return true;
}

} // namespace zeldesk
