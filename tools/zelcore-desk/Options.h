// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QSize>
#include <QtCore/QStringList>

#include <optional>

namespace zeldesk {

/// What the command line asks for.
struct Options
{
    QString root;
    QString scenario;
    QString record;
    QString screenshot; ///< The file for a picture of the window; the program ends when it is taken.
    QString page;
    QString look; ///< The type of the record to begin with.
    QSize size{1180, 760};
    int contacts = 0;
    quint32 seed = 1;
    bool isDark = false;
    bool isPaused = false;
    QStringList application; ///< A program and its arguments, to be run beside the desk.
};

/// Ends the process for --help and --version; empty, with a line on standard error, for what is no option.
std::optional<Options> readOptions(const QStringList& arguments);

} // namespace zeldesk
