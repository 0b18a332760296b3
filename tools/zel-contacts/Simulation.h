// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <QtCore/QString>

/// Fills a core service with people who have faces.
class Simulation
{
public:
    /// Whom the service knows, and how it begins.
    struct World
    {
        int contacts = 0;
        QString state;        ///< where a registration ends; empty: it succeeds
        bool isAlive = false; ///< things happen by themselves
    };

    /// \a service must outlive it.
    explicit Simulation(zelcore::Simulator& service)
        : m_service(service)
    {
    }

    /// False, with a sentence in \a error, when it cannot be: before anything of the library is made.
    bool start(const World& world, QString* error);

private:
    void addAda();
    void addFaces();

    zelcore::Simulator& m_service;
};
