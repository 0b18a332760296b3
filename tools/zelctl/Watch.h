// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>

namespace zelctl {

class Output;
class Record;
class Session;

/// Prints every signal until it is told to quit; registers if the first state allows it. What does not go as hoped is
/// said on standard error and watched further.
class Watch : public QObject
{
    Q_OBJECT

public:
    /// \a session and \a output must outlive it. \a timeout is for the first registration state, in milliseconds.
    Watch(Session& session, Output& output, int timeout, QObject* parent = nullptr);

    void start();
    void quit();

Q_SIGNALS:
    void finished(int exitStatus);

private:
    void onSignal(const zelctl::Record& record);
    void onFirstState();

    Session& m_session;
    Output& m_output;
    const int m_timeout;
    bool m_heardState = false;
};

} // namespace zelctl
