// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>

#include <functional>

namespace zelcore {

/// The identifiers by which people are invited, and how the user stands with their owners. A value; who is a contact is
/// for others to know.
class EcoIds
{
public:
    using IsContact = std::function<bool(const QString& ppId)>;

    /// That of \a ppId: the one it was given, or one made from it when its owner \a isKnown.
    QString of(const QString& ppId, bool isKnown) const;
    void set(const QString& ppId, const QString& ecoId) { m_given.insert(ppId, ecoId); }

    QString status(const QString& ecoId, const IsContact& isContact) const;
    /// What is told instead of what the contacts say. Empty, or why \a status is none.
    QString setStatus(const QString& ecoId, const QString& status);
    /// The user invited the owner, who is to answer.
    void invite(const QString& ecoId, const IsContact& isContact);
    void endPending(const QString& ecoId);

private:
    QHash<QString, QString> m_given;  ///< By ppId.
    QHash<QString, QString> m_states; ///< By eco identifier.
};

} // namespace zelcore
