// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>

#include <sys/types.h>

/// A process that sends back every record it gets, to one caller after the other. Start it before any thread.
class EchoProcess
{
public:
    explicit EchoProcess(const QByteArray& path);
    ~EchoProcess();
    EchoProcess(const EchoProcess&) = delete;
    EchoProcess& operator=(const EchoProcess&) = delete;

private:
    pid_t m_process = -1;
};

/// Microseconds for one record of \a size bytes out and the answer in, through an event loop and a socket notifier.
/// The descriptor is closed.
double roundTrip(int descriptor, int size, int rounds);
