// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Arguments.h"
#include "Record.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

namespace zelctl {

struct Command;
class Output;
class Session;

/// One command that stands for itself: waits for what it needs, registers if that is missing, acts, waits for the
/// outcome and ends. finished() comes exactly once, from the event loop.
class OneShot : public QObject
{
    Q_OBJECT

public:
    /// All of them must outlive it. \a timeout is for the whole run, in milliseconds.
    OneShot(Session& session, Output& output, const Command& command, const Arguments& arguments, int timeout,
            QObject* parent = nullptr);

    void start();
    /// After a hand-over to another application: ends only when delivered() says that it arrived. For a run whose
    /// end is the end of the application that it was handed to.
    void waitForDelivery() { m_waitsForDelivery = true; }
    void delivered();
    /// The service said that it refuses what was asked for, and why.
    void refuse(const QString& why);
    void interrupt();

Q_SIGNALS:
    void finished(int exitStatus);

private:
    enum class Phase { State, Registration, Contacts, Outcome, Delivery, Done }; ///< in this order

    bool registers() const;
    void onSignal(const Record& record);
    void onState();
    void onLive();
    void requestRegistration();
    void act();
    void onOutcome(const Record& record);
    void succeed(const Record& signal);
    void fail(const QString& sentence);
    void finish(int exitStatus);
    void onTimeout();
    void showPatience();
    void hidePatience() const;
    QString fill(const QString& sentence, const Record& signal, bool* hasNothing) const;

    Session& m_session;
    Output& m_output;
    const Command& m_command;
    const Arguments m_arguments;
    const int m_timeout;
    QTimer m_timer;
    QTimer m_patience; ///< Runs at a terminal, where somebody wonders what is being waited for.
    Phase m_phase = Phase::State;
    bool m_waitsForDelivery = false;
    QString m_saved; ///< What is to be said about a file that was written.
};

} // namespace zelctl
