// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "RawApplication.h"

#include <zelcore/Simulator.h>

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

/// Each case has a service of its own and one application that has begun.
class ServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_simulator = std::make_unique<zelcore::Simulator>();
        QVERIFY(m_simulator->start());
        m_refused = std::make_unique<QSignalSpy>(m_simulator.get(), &zelcore::Simulator::refused);
        m_application = std::make_unique<RawApplication>(m_simulator->root());
        m_application->begin();
        QTRY_COMPARE(m_simulator->clientCount(), 1);
    }

    void cleanup()
    {
        m_application.reset();
        m_refused.reset();
        m_simulator.reset();
    }

protected:
    std::unique_ptr<zelcore::Simulator> m_simulator;
    std::unique_ptr<QSignalSpy> m_refused;
    std::unique_ptr<RawApplication> m_application;
};
