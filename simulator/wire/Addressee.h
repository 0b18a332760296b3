// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

#include <optional>

namespace zelcore {

/// One application, by its number or its UUID, or all of them.
struct Addressee
{
    int client = 0;
    QString uuid; ///< In small letters.

    /// Of an empty text all of them. Empty, with a sentence in \a problem if wanted, when it is neither a number nor a
    /// UUID.
    static std::optional<Addressee> of(const QString& application, QString* problem = nullptr);
    /// The same of a text that must name one.
    static std::optional<Addressee> one(const QString& application, QString* problem);

    bool isEverybody() const { return client == 0 && uuid.isEmpty(); }
    bool isMeant(int number, const QString& itsUuid) const
    {
        return isEverybody() || (client > 0 ? client == number : uuid.compare(itsUuid, Qt::CaseInsensitive) == 0);
    }
};

} // namespace zelcore
