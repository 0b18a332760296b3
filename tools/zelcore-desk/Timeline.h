// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <QtCore/QObject>
#include <QtCore/QTimer>
#include <QtCore/QUrl>
#include <QtQml/qqmlregistration.h>

namespace zeldesk {

class Service;

/// The scenarios of a simulator, who must outlive this, and the timeline of the one that was opened last.
class Timeline : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")
    /// Those that ship with the simulator.
    Q_PROPERTY(QStringList scenarios READ scenarios CONSTANT FINAL)
    Q_PROPERTY(QString scenario READ scenario NOTIFY scenarioChanged FINAL)
    Q_PROPERTY(bool paused READ isPaused WRITE setPaused NOTIFY changed FINAL)
    /// Milliseconds; looked at some times a second.
    Q_PROPERTY(int time READ time NOTIFY changed FINAL)

public:
    /// \a service is told what happens; it must outlive this.
    Timeline(zelcore::Simulator& simulator, Service& service, QObject* parent = nullptr);

    QStringList scenarios() const { return zelcore::Simulator::scenarioNames(); }
    QString scenario() const { return m_scenario; }
    bool isPaused() const { return m_simulator.isTimelinePaused(); }
    void setPaused(bool paused);
    int time() const { return m_simulator.timelineTime(); }

    /// A name or a path. False when it is faulty; nothing has happened then.
    Q_INVOKABLE bool open(const QString& scenario);
    /// Shows that the simulator has taken \a scenario, for whoever had it do so.
    void opened(const QString& scenario);
    Q_INVOKABLE bool openFile(const QUrl& file) { return open(file.toLocalFile()); }
    /// Plays the service's side of a recording for the applications that come, in place of the world. False when it
    /// cannot be; nothing has happened then.
    Q_INVOKABLE bool replay(const QUrl& file);
    /// Runs the next entry, and pauses.
    Q_INVOKABLE void step();

Q_SIGNALS:
    void scenarioChanged();
    void changed();

private:
    void look();

    zelcore::Simulator& m_simulator;
    Service& m_service;
    QString m_scenario;
    bool m_wasPaused = false; ///< As it was told last.
    int m_toldTime = 0;
    QTimer m_look;
};

} // namespace zeldesk
