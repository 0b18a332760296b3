// SPDX-License-Identifier: Apache-2.0
#include "Timeline.h"

#include "Service.h"

#include <common/ReplayLines.h>

#include <QtCore/QFileInfo>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace zeldesk {

Timeline::Timeline(zelcore::Simulator& simulator, Service& service, QObject* parent)
    : QObject(parent)
    , m_simulator(simulator)
    , m_service(service)
{
    zeltools::tellOfReplay(simulator, this,
                           [&service](const QString& line, bool isDifference) { service.note(line, isDifference); });
    connect(&simulator, &zelcore::Simulator::worldReset, this, [this] {
        m_scenario.clear();
        Q_EMIT scenarioChanged();
    });
    connect(&m_look, &QTimer::timeout, this, &Timeline::look);
    m_look.start(200ms);
}

void Timeline::setPaused(bool paused)
{
    m_simulator.setTimelinePaused(paused);
    look();
}

bool Timeline::open(const QString& scenario)
{
    QString problem;
    const bool isDone = m_simulator.loadScenario(scenario, &problem);
    if (isDone)
        opened(scenario);
    else
        m_service.note(problem, true);
    return isDone;
}

void Timeline::opened(const QString& scenario)
{
    m_service.note(u"opened %1"_s.arg(scenario));
    m_scenario = QFileInfo(scenario).completeBaseName();
    Q_EMIT scenarioChanged();
    Q_EMIT m_service.ordersChanged();
    look();
}

bool Timeline::replay(const QUrl& file)
{
    const QString path = file.toLocalFile();
    QString problem;
    const bool isDone = m_simulator.replay(path, &problem, zelcore::Simulator::ReplayPace::AsThen);
    m_service.note(isDone ? u"%1 is played for the applications that come now"_s.arg(path) : problem, !isDone);
    return isDone;
}

void Timeline::step()
{
    QString problem;
    if (!m_simulator.stepTimeline(&problem))
        m_service.note(problem, true);
    look();
}

/// Commands and the clock change these, too.
void Timeline::look()
{
    if (m_wasPaused == isPaused() && m_toldTime == time())
        return;
    m_wasPaused = isPaused();
    m_toldTime = time();
    Q_EMIT changed();
}

} // namespace zeldesk
