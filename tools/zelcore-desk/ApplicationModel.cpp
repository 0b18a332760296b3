// SPDX-License-Identifier: Apache-2.0
#include "ApplicationModel.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zeldesk {

using zelcore::Client;
using zelcore::Simulator;

ApplicationModel::ApplicationModel(Simulator& simulator, QObject* parent)
    : KeyedListModel(parent)
    , m_simulator(simulator)
{
    connect(&simulator, &Simulator::clientCountChanged, this, &ApplicationModel::changeAll);
    connect(&simulator, &Simulator::registrationRequested, this, &ApplicationModel::changeAll);
    connect(&simulator, &Simulator::registrationStateChanged, this, &ApplicationModel::changeAll);
}

QVariant ApplicationModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const QList<Client> clients = m_simulator.clients();
    const int number = key(index).toInt();
    const auto found =
        std::find_if(clients.cbegin(), clients.cend(), [&](const Client& client) { return client.number == number; });
    const Client client = found == clients.cend() ? Client() : *found;
    switch (role) {
    case Qt::DisplayRole:
    case NumberRole:
        return key(index);
    case UuidRole:
        return client.uuid;
    case StateRole:
        return client.state;
    case ChoicesRole:
        return Simulator::registrationStates();
    case ProcessRole:
        return client.process;
    default:
        return {};
    }
}

QHash<int, QByteArray> ApplicationModel::roleNames() const
{
    return {{NumberRole, "number"},
            {UuidRole, "uuid"},
            {StateRole, "registration"},
            {ChoicesRole, "choices"},
            {ProcessRole, "process"}};
}

void ApplicationModel::setState(const QString& number, const QString& state)
{
    m_simulator.setRegistrationState(state, number);
}

QStringList ApplicationModel::wantedKeys() const
{
    QStringList keys;
    for (const Client& client : m_simulator.clients())
        keys.append(QString::number(client.number));
    return keys;
}

} // namespace zeldesk
