// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QObject>

class QSocketNotifier;

namespace vx::platform::zel {

/// Watches the descriptor of the platform object and tells what was published there, one read per notification.
///
/// The descriptor is borrowed and never closed. Lives on the thread that made it and needs that thread's event loop; a
/// slot may run a nested loop, in which the next notification is read and announced before the first returns.
class PPSMonitor : public QObject
{
    Q_OBJECT

public:
    PPSMonitor(int ppsDescriptor, QObject* parent);

Q_SIGNALS:
    /// Exactly the bytes of one read, at most 65536. What was published beyond that is lost.
    void ppsMessageReceived(QByteArray ppsMessage);

private Q_SLOTS:
    void readyRead();

private:
    int const m_descriptor;
    QSocketNotifier* const m_notifier;
    QByteArray m_buffer; ///< memory for the next read
};

} // namespace vx::platform::zel
