// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QString>

namespace zeltools {

/// Lines of a descriptor, as they are typed or piped in. A last line without a line break counts.
class LineReader : public QObject
{
    Q_OBJECT

public:
    /// \a input stays the caller's.
    explicit LineReader(int input, QObject* parent = nullptr);

    /// Lines come from the event loop from now on.
    void start();
    /// No further line comes, also none that was read already; nor does ended().
    void stop();

Q_SIGNALS:
    void lineRead(const QString& line);
    /// There is no more input, or there never was any.
    void ended();

private:
    void read();
    void end();

    const int m_input;
    QSocketNotifier m_notifier;
    QByteArray m_pending;
    bool m_stopped = false;
};

} // namespace zeltools
