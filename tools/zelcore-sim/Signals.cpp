// SPDX-License-Identifier: Apache-2.0
#include "Signals.h"

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

Signals::Signals(QObject* parent)
    : QObject(parent)
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    m_descriptor = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        signalfd_siginfo info;
        if (::read(m_descriptor, &info, sizeof info) == sizeof info)
            Q_EMIT terminated();
    });
}

Signals::~Signals()
{
    m_notifier.reset();
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}
