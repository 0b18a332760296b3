// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "KeyedListModel.h"

#include <zelcore/Simulator.h>

namespace zeldesk {

/// Everybody in the world of a simulator, who must outlive this, and what can be done to them.
class ContactModel : public zeldesk::KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")

public:
    enum Role { UserIdRole = Qt::UserRole, HandleRole, NameRole, MessageRole, BusyRole, InstalledRole, SearchRole };

    explicit ContactModel(zelcore::Simulator& simulator, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // Contacts are named by their user id.

    /// Adds somebody of this name who runs the application. The user id; empty when it was refused.
    Q_INVOKABLE QString add(const QString& displayName);
    Q_INVOKABLE void remove(const QString& userId);
    Q_INVOKABLE void setInstalled(const QString& userId, bool installed);
    Q_INVOKABLE void invite(const QString& userId);
    /// Other people each time.
    Q_INVOKABLE void generate(int count);
    /// Lets contacts change, come, go and invite so many times a second; 0 ends it.
    Q_INVOKABLE void live(double perSecond);

protected:
    QStringList wantedKeys() const override { return m_simulator.contactIds(); }

private:
    zelcore::Simulator& m_simulator;
};

} // namespace zeldesk
