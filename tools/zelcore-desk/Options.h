// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/ServiceOptions.h>

#include <QtCore/QSize>
#include <QtCore/QStringList>

#include <variant>

namespace zeldesk {

/// What the command line asks for.
struct Options : zeltools::ServiceOptions
{
    QString screenshot; ///< The file for a picture of the window; the program ends when it is taken.
    QString page;
    QString look; ///< The type of the record to begin with.
    QSize size;
    bool isDark = false;
    QStringList application; ///< A program and its arguments, to be run beside the desk.
};

/// Needs no application object, and so no screen. What the process is to end with when the command line asks for help
/// and the like, which is printed, or is wrong, which is said on standard error.
std::variant<Options, int> readOptions(const QStringList& arguments);

} // namespace zeldesk
