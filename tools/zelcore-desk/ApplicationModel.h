// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "KeyedListModel.h"

#include <zelcore/Simulator.h>

#include <map>

namespace zeldesk {

/// The applications that are connected to a simulator, who must outlive this.
class ApplicationModel : public KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")

public:
    enum Role { NumberRole = Qt::UserRole, UuidRole, RecordsRole };

    explicit ApplicationModel(zelcore::Simulator& simulator, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

protected:
    QStringList wantedKeys() const override;

private:
    struct Application
    {
        QString uuid;
        qint64 records = 0;
    };

    void note(const zelcore::WireRecord& record);

    std::map<int, Application> m_applications;
};

} // namespace zeldesk
