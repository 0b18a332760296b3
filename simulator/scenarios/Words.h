// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace zelcore {

/// Cuts a line into words as a shell does; Simulator::splitWords() says how. Empty, with a sentence in \a error, when
/// something is not closed. \a comment at the beginning of a word ends the line.
std::optional<QStringList> splitWords(const QString& line, QString* error, QChar comment = {});

} // namespace zelcore
