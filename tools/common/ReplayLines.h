// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

#include <functional>

class QObject;

namespace zelcore {
class Simulator;
}

namespace zeltools {

/// While \a context lives, \a tell is called with a line for each difference of a recording that \a simulator plays,
/// and with one for its end.
void tellOfReplay(zelcore::Simulator& simulator, QObject* context,
                  const std::function<void(const QString& line, bool isDifference)>& tell);

} // namespace zeltools
