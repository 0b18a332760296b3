// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <memory>

/// SIGINT and SIGTERM as a Qt signal, so that the program ends in order and leaves no sockets behind. One per process.
class Signals : public QObject
{
    Q_OBJECT
public:
    explicit Signals(QObject* parent = nullptr);
    ~Signals() override;

Q_SIGNALS:
    void terminated();

private:
    int m_descriptor = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
