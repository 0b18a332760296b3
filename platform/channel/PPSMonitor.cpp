// SPDX-License-Identifier: Apache-2.0
#include <platform/channel/PPSMonitor.h>

#include <platform/channel/Trace.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>
#include <QtCore/QSocketNotifier>
#include <QtCore/QThread>

#include <unistd.h>

#include <utility>

namespace vx::platform::zel {

namespace {

constexpr int readBufferSize = 65536;

QPointer<PPSMonitor>& monitorOfTheProcess()
{
    static QPointer<PPSMonitor> monitor;
    return monitor;
}

} // namespace

/// Called for each application object that the process makes.
void PPSMonitor::watchAnew()
{
    PPSMonitor* const monitor = monitorOfTheProcess();
    if (monitor && monitor->thread() == QThread::currentThread())
        monitor->watch();
}

PPSMonitor::PPSMonitor(int ppsDescriptor, QObject* parent)
    : QObject(parent)
    , m_descriptor(ppsDescriptor)
{
    watch();
    monitorOfTheProcess() = this;
    [[maybe_unused]] static const bool isAdded = (qAddPreRoutine(watchAnew), true);
}

void PPSMonitor::watch()
{
    delete m_notifier;
    m_notifier = new QSocketNotifier(m_descriptor, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &PPSMonitor::readyRead);
}

void PPSMonitor::readyRead()
{
    if (m_descriptor == -1)
        return;

    // Getting and giving back so much memory for each message would cost more than reading it. Whoever reads in a
    // nested event loop finds none and brings their own.
    QByteArray message = std::exchange(m_buffer, QByteArray());
    message.resize(readBufferSize);
    const ssize_t count = ::read(m_descriptor, message.data(), readBufferSize);
    qCDebug(lcPlatform) << count << " : Start of Message : PPSMonitor::readyRead";
    if (count < 1) {
        qCWarning(lcPlatform) << "PpsMonitor::read failed to read pps data, error ";
        return;
    }

    message.resize(count);
    qCDebug(lcPlatform) << QString::fromUtf8(message) << ": End of Message : PPSMonitor::readyRead";
    const QPointer<PPSMonitor> alive(this);
    Q_EMIT ppsMessageReceived(message);
    if (alive && message.isDetached())
        m_buffer.swap(message);
}

} // namespace vx::platform::zel
