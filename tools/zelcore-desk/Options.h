// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QSize>
#include <QtCore/QStringList>

#include <variant>

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
    QSize size;
    int contacts = 0;
    quint32 seed = 0;
    bool isDark = false;
    bool isPaused = false;
    QStringList application; ///< A program and its arguments, to be run beside the desk.
};

/// Needs no application object, and so no screen. What the process is to end with when the command line asks for help
/// and the like, which is printed, or is wrong, which is said on standard error.
std::variant<Options, int> readOptions(const QStringList& arguments);

} // namespace zeldesk
