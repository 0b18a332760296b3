// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

namespace zeltools {

/// The folder below which a core service of this user's serves, the same one each time.
QString usualRoot();
/// The line that lets a shell's applications find the service below \a root.
QString exportLine(const QString& root);

} // namespace zeltools
