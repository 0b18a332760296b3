// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "KeyedListModel.h"

#include <zelcore/Simulator.h>

namespace zeldesk {

/// The applications that are connected to a simulator, who must outlive this, by their numbers.
class ApplicationModel : public zeldesk::KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")

public:
    enum Role { NumberRole = Qt::UserRole, UuidRole, StateRole, ChoicesRole, ProcessRole };

    explicit ApplicationModel(zelcore::Simulator& simulator, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Sets the registration of one application.
    Q_INVOKABLE void setState(const QString& number, const QString& state);

protected:
    QStringList wantedKeys() const override;

private:
    zelcore::Simulator& m_simulator;
};

} // namespace zeldesk
