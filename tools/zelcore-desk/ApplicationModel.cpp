// SPDX-License-Identifier: Apache-2.0
#include "ApplicationModel.h"

using namespace Qt::StringLiterals;

namespace zeldesk {

ApplicationModel::ApplicationModel(zelcore::Simulator& simulator, QObject* parent)
    : KeyedListModel(parent)
{
    connect(&simulator, &zelcore::Simulator::clientConnected, this, [this](int client) {
        m_applications.try_emplace(client);
        change(QString::number(client));
    });
    connect(&simulator, &zelcore::Simulator::clientDisconnected, this, [this](int client) {
        m_applications.erase(client);
        change(QString::number(client));
    });
    connect(&simulator, &zelcore::Simulator::recordPassed, this, &ApplicationModel::note);
}

QVariant ApplicationModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const int number = key(index).toInt();
    const auto found = m_applications.find(number);
    const Application application = found == m_applications.end() ? Application() : found->second;
    switch (role) {
    case Qt::DisplayRole:
    case NumberRole:
        return number;
    case UuidRole:
        return application.uuid;
    case RecordsRole:
        return application.records;
    default:
        return {};
    }
}

QHash<int, QByteArray> ApplicationModel::roleNames() const
{
    return {{NumberRole, "number"}, {UuidRole, "uuid"}, {RecordsRole, "records"}};
}

QStringList ApplicationModel::wantedKeys() const
{
    QStringList keys;
    for (const auto& [number, application] : m_applications)
        keys.append(QString::number(number));
    return keys;
}

/// The first record of an application may pass before it is told that it has come.
void ApplicationModel::note(const zelcore::WireRecord& record)
{
    if (record.client == 0)
        return;
    Application& application = m_applications[record.client];
    ++application.records;
    if (!record.uuid.isEmpty())
        application.uuid = record.uuid;
    change(QString::number(record.client));
}

} // namespace zeldesk
