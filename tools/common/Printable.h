// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

namespace zeltools {

/// \a text on one line and without anything that a terminal would obey: a name or message comes from strangers.
QString printable(const QString& text);

/// The same line by line.
QString printableLines(const QString& text);

} // namespace zeltools
