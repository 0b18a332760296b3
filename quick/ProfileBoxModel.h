// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/PictureRole.h>

#include <vx/platform/zel/ProfileBoxModel.h>

namespace zelquick {

/// The items of the application's box, with their icons as the role "icon", which is empty where there is none.
class ProfileBoxModel : public vx::platform::zel::ProfileBoxModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(zelquick::Context* context READ context WRITE setContext NOTIFY contextChanged REQUIRED FINAL)

public:
    explicit ProfileBoxModel(QObject* parent = nullptr);

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
