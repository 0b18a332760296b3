// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <QtCore/QString>

/// A core service in this process, with people in it who have faces.
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

    /// False, with a sentence in \a error, when it cannot be: before anything of the library is made.
    bool start(const World& world, QString* error);

private:
    void addAda();
    void addFaces();

    zelcore::Simulator m_service;
};
