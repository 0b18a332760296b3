// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/recordings/Comparison.h>
#include <simulator/recordings/Recording.h>

#include <zelcore/Simulator.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QTimer>

#include <optional>
#include <vector>

namespace zelcore {

/// Plays the service's side of a recording, and says where applications do something else than then.
///
/// What one application sent and heard is a lane, and so is what one invocation target was asked for. A lane is played
/// in its order: what it heard goes out once everything has come that it, and others that are here, had sent before.
/// Applications take their lanes in the order in which they come.
class Replay : public QObject
{
    Q_OBJECT
public:
    Replay(Recording recording, Simulator::ReplayPace pace, int patience);

    void connected(int client);
    void disconnected(int client);
    void received(int client, const QByteArray& record);
    void invoked(const QString& target, const QByteArray& record);
    /// Nothing more happens: the last call, which may come while it tells somebody something.
    void end();

    const QStringList& differences() const { return m_differences; }
    /// Whether everything has been played, and everything that was asked for then has come or was given up.
    bool isFinished() const;
    /// What it waits for, in words; empty when it is finished.
    QString awaits() const;

Q_SIGNALS:
    void due(int client, const QByteArray& record);
    void goAwayDue();
    void comeBackDue();
    void differed(const QString& sentence);
    void finished();

private:
    using Entry = Recording::Entry;

    struct Step
    {
        qsizetype entry = 0;
        bool met = false;     ///< It has come.
        bool givenUp = false; ///< It had not come when everything was quiet.
    };

    struct Lane
    {
        int application = 0; ///< As recorded; 0 for a target.
        QString target;
        std::optional<int> client; ///< Who took it.
        bool isOver = false;
        std::vector<Step> steps;
        size_t next = 0;
        qint64 then = 0; ///< When, in the recording, the last step was,
        qint64 now = 0;  ///< and when it was now.
        QHash<QString, QString> cookies;
        QHash<QString, QString> streams;

        bool isTarget() const { return application == 0; }
        bool isActive() const { return client && !isOver && next < steps.size(); }
    };

    const Entry& entry(const Step& step) const { return m_recording.entries.at(step.entry); }
    QString place(const Step& step) const;
    QString nameOf(const Lane& lane) const;
    void fill();
    Lane& laneFor(const Entry& entry);
    Lane* laneOf(int client);

    void take(Lane& lane, const QByteArray& record);
    bool takeEqual(Lane& lane, const QByteArray& record);
    bool takeSimilar(Lane& lane, const QByteArray& record);
    Comparison compared(const Lane& lane, const Entry& then, const QByteArray& record) const;
    void meet(Lane& lane, Step& step, const Comparison& comparison);
    QByteArray bound(const Lane& lane, const QByteArray& record);

    void advance();
    bool isCaused(const Step& step) const;
    bool advanceLane(Lane& lane);
    bool isServiceNext() const;
    bool advanceService();
    bool waits(const Lane& lane) const;
    qint64 lastChance(const Lane& lane) const;
    qint64 dueTime(qint64 then, qint64 laneThen, qint64 laneNow) const;
    void schedule();
    void giveUp();
    void differ(const QString& sentence);

    const Recording m_recording;
    const Simulator::ReplayPace m_pace;
    const int m_patience;
    std::vector<Lane> m_lanes;
    std::vector<Step> m_service; ///< When it goes away and returns.
    size_t m_nextOfService = 0;
    qint64 m_lastThen = 0; ///< As in a lane, for the last step of any.
    qint64 m_lastNow = 0;
    qint64 m_quietSince = 0;
    QHash<QString, QString> m_substitutes; ///< What stands for what in an anonymous recording.
    QSet<QString> m_named;                 ///< Whom such a one has named to applications so far.
    QStringList m_differences;
    QElapsedTimer m_clock;
    QTimer m_timer;
    bool m_advancing = false;
    bool m_again = false;
    bool m_told = false; ///< That it is finished.
    bool m_ended = false;
};

} // namespace zelcore
