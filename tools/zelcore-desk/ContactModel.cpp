// SPDX-License-Identifier: Apache-2.0
#include "ContactModel.h"

using namespace Qt::StringLiterals;

namespace zeldesk {

ContactModel::ContactModel(zelcore::Simulator& simulator, QObject* parent)
    : KeyedListModel(parent)
    , m_simulator(simulator)
{
    connect(&simulator, &zelcore::Simulator::contactChanged, this, &ContactModel::change);
    connect(&simulator, &zelcore::Simulator::worldReset, this, &ContactModel::changeAll);
}

QVariant ContactModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const QString& userId = key(index);
    const zelcore::Person person = m_simulator.contact(userId);
    switch (role) {
    case UserIdRole:
        return userId;
    case HandleRole:
        return person.handle;
    case Qt::DisplayRole:
    case NameRole:
        return person.displayName.isEmpty() ? person.handle : person.displayName;
    case MessageRole:
        return person.personalMessage;
    case BusyRole:
        return person.showBusy;
    case InstalledRole:
        return m_simulator.hasApplication(userId);
    case SearchRole:
        return QString(person.displayName + u'\n' + person.handle + u'\n' + person.personalMessage);
    default:
        return {};
    }
}

QHash<int, QByteArray> ContactModel::roleNames() const
{
    return {{UserIdRole, "userId"},   {HandleRole, "handle"}, {NameRole, "name"},
            {MessageRole, "message"}, {BusyRole, "busy"},     {InstalledRole, "installed"}};
}

QString ContactModel::add(const QString& displayName)
{
    return m_simulator.addContact(displayName);
}

void ContactModel::remove(const QString& userId)
{
    m_simulator.removeContact(userId);
}

void ContactModel::setInstalled(const QString& userId, bool installed)
{
    if (installed == m_simulator.hasApplication(userId))
        return;
    if (installed)
        m_simulator.installApplication(userId);
    else
        m_simulator.uninstallApplication(userId);
}

void ContactModel::invite(const QString& userId)
{
    m_simulator.sendInvitation(userId);
}

void ContactModel::generate(int count)
{
    m_simulator.generateContacts(count, quint32(m_simulator.contactCount()) + 1);
}

void ContactModel::live(double perSecond)
{
    m_simulator.setActivity(zelcore::Simulator::Activity::Mixed, perSecond);
}

} // namespace zeldesk
