// SPDX-License-Identifier: Apache-2.0
#include "RoundTrip.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QSocketNotifier>
#include <QtCore/QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <csignal>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void echo(int listening)
{
    std::vector<char> record(65536);
    for (;;) {
        const int caller = ::accept(listening, nullptr, nullptr);
        ssize_t size = 0;
        while ((size = ::recv(caller, record.data(), record.size(), 0)) > 0)
            ::send(caller, record.data(), size_t(size), MSG_NOSIGNAL);
        ::close(caller);
    }
}

} // namespace

EchoProcess::EchoProcess(const QByteArray& path)
{
    const int listening = ::socket(AF_UNIX, SOCK_SEQPACKET, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), qMin(size_t(path.size()), sizeof address.sun_path - 1));
    if (::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listening, 4) != 0) {
        std::perror("bench_contacts: listen");
        std::exit(1);
    }
    m_process = ::fork();
    if (m_process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        echo(listening);
    }
    ::close(listening);
}

EchoProcess::~EchoProcess()
{
    ::kill(m_process, SIGTERM);
    ::waitpid(m_process, nullptr, 0);
}

double roundTrip(int descriptor, int size, int rounds)
{
    const QByteArray out(size, 'x');
    QByteArray in(65536, Qt::Uninitialized);
    const auto send = [&] { return ::write(descriptor, out.constData(), size_t(out.size())) == out.size(); };
    QEventLoop loop;
    int left = rounds;
    QSocketNotifier notifier(descriptor, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &loop, [&] {
        const bool whole = ::read(descriptor, in.data(), size_t(in.size())) == out.size();
        if (!whole || --left == 0 || !send())
            loop.quit();
    });
    QElapsedTimer timer;
    timer.start();
    if (send())
        loop.exec();
    const double perRound = double(timer.nsecsElapsed()) / 1000 / rounds;
    notifier.setEnabled(false);
    ::close(descriptor);
    if (left != 0) {
        std::fprintf(stderr, "bench_contacts: a record was cut or lost\n");
        std::exit(1);
    }
    return perRound;
}
