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
///
/// A notifier ends with the application object under which it was made. A process may make another one after that: the
/// monitor, of which there is one, then watches anew.
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
    static void watchAnew();
    void watch();

    int const m_descriptor;
    QSocketNotifier* m_notifier = nullptr;
    QByteArray m_buffer; ///< memory for the next read
};

} // namespace vx::platform::zel
