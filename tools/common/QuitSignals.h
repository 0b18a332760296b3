// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>

namespace zeltools {

/// Turns SIGINT, SIGTERM and SIGHUP into a Qt signal, so that a run that is interrupted still removes what it made.
///
/// block() must come first in main(), before anything starts a thread: a thread that does not inherit the mask
/// would be killed by the signal. Make one, on the thread of the event loop.
class QuitSignals : public QObject
{
    Q_OBJECT

public:
    static void block();
    /// Between fork and exec: another program meets them as it likes.
    static void unblock();

    explicit QuitSignals(QObject* parent = nullptr);
    ~QuitSignals() override;

Q_SIGNALS:
    void quitRequested();

private:
    const int m_descriptor;
};

} // namespace zeltools
