// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation.h"

#include <common/Manual.h>
#include <common/WindowOptions.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QList>
#include <QtCore/QString>

class QCommandLineParser;

/// What the command line asks for.
struct Options
{
    zeltools::WindowOptions window;
    QString colors; ///< "light" or "dark"; empty for the desktop's.
    bool isSimulated = false;
    Simulation::World world; ///< What is simulated.

    static QList<QCommandLineOption> all();
    static zeltools::Manual manual();
    /// Takes over what a parser that knows these has found. A sentence for what cannot be meant; empty if all can.
    QString read(const QCommandLineParser& parser);
};
