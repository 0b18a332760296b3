// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/PictureRole.h>

#include <vx/platform/zel/ContactListModel.h>

namespace zelquick {

/// The contacts who have the application, with their pictures as the role "picture".
class ContactListModel : public vx::platform::zel::ContactListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(zelquick::Context* context READ context WRITE setContext NOTIFY contextChanged REQUIRED FINAL)

public:
    explicit ContactListModel(QObject* parent = nullptr);

    Context* context() const { return m_pictures.context(); }
    void setContext(Context* context);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void contextChanged();

private:
    PictureRole m_pictures;
};

} // namespace zelquick
