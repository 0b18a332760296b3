// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/Manual.h>
#include <common/ServiceOptions.h>
#include <common/WindowOptions.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QList>
#include <QtCore/QStringList>

class QCommandLineParser;

namespace zeldesk {

/// What the command line asks for.
struct Options
{
    zeltools::ServiceOptions service;
    zeltools::WindowOptions window;
    QString look; ///< The type of the record to begin with.
    bool isDark = false;
    QStringList application; ///< A program and its arguments, to be run beside the desk.

    static QList<QCommandLineOption> all();
    static zeltools::Manual manual();
    /// Takes over what a parser that knows these has found. A sentence for what cannot be meant; empty if all can.
    QString read(const QCommandLineParser& parser);
};

} // namespace zeldesk
