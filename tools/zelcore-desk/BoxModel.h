// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "KeyedListModel.h"

#include <zelcore/Simulator.h>

namespace zeldesk {

/// The items of the profile box of a simulator, who must outlive this, and what can be done to them.
class BoxModel : public zeldesk::KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")
    /// The ids of the icons that items may name.
    Q_PROPERTY(QStringList icons READ icons NOTIFY iconsChanged FINAL)

public:
    enum Role { IdRole = Qt::UserRole, TextRole, CookieRole, IconRole };

    explicit BoxModel(zelcore::Simulator& simulator, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QHash<int, QByteArray> roleNames() const override;

    QStringList icons() const;

    Q_INVOKABLE bool add(const QString& text);
    Q_INVOKABLE void remove(const QString& id);
    Q_INVOKABLE void clear();
    /// Registers a made-up icon under the next free id.
    Q_INVOKABLE void addIcon();
    Q_INVOKABLE void removeIcon(const QString& id);

Q_SIGNALS:
    void iconsChanged();

protected:
    QStringList wantedKeys() const override;

private:
    zelcore::BoxItem item(const QString& id) const;

    zelcore::Simulator& m_simulator;
};

} // namespace zeldesk
