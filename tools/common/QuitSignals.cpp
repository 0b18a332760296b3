// SPDX-License-Identifier: Apache-2.0
#include <common/QuitSignals.h>

#include <QtCore/QSocketNotifier>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace zeltools {

namespace {

sigset_t quitSet()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        // A hang-up that we were started to ignore (nohup) stays ignored. An interrupt does not: a script has its
        // background commands ignore it, and they would outlive the script that is interrupted.
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (number != SIGHUP || action.sa_handler != SIG_IGN)
            sigaddset(&set, number);
    }
    return set;
}

} // namespace

void QuitSignals::block()
{
    const sigset_t set = quitSet();
    sigprocmask(SIG_BLOCK, &set, nullptr);
}

void QuitSignals::unblock()
{
    const sigset_t set = quitSet();
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
}

QuitSignals::QuitSignals(QObject* parent)
    : QObject(parent)
    , m_descriptor([] {
        const sigset_t set = quitSet();
        return signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
    }())
{
    auto* notifier = new QSocketNotifier(m_descriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        signalfd_siginfo info;
        if (read(m_descriptor, &info, sizeof info) == static_cast<ssize_t>(sizeof info))
            Q_EMIT quitRequested();
    });
}

QuitSignals::~QuitSignals()
{
    close(m_descriptor);
}

} // namespace zeltools
