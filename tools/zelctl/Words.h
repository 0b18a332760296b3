// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace zelctl {

/// Splits a line into words as a shell does: blanks separate, '...' is literal, within "..." a backslash escapes the
/// quote and itself, elsewhere it makes the next character an ordinary one. "\n" and "\t" within double quotes are a
/// line break and a tab, which a line could not hold otherwise. Empty, with a sentence in \a error, when a quote is
/// not closed or the line ends in a backslash.
std::optional<QStringList> splitWords(const QString& line, QString* error);

} // namespace zelctl
