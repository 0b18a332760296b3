// SPDX-License-Identifier: Apache-2.0
#include <quick/ProfileBoxModel.h>

namespace zelquick {

ProfileBoxModel::ProfileBoxModel(QObject* parent)
    : zel::ProfileBoxModel(nullptr, parent)
    , m_pictures(this, PictureStore::Kind::Icon, "iconId",
                 [this](zel::Context* context) { zel::ProfileBoxModel::setContext(context); })
{
}

void ProfileBoxModel::setContext(Context* context)
{
    if (m_pictures.setContext(context))
        Q_EMIT contextChanged();
}

QVariant ProfileBoxModel::data(const QModelIndex& index, int role) const
{
    return role == PictureRole::role ? m_pictures.urlOf(index) : zel::ProfileBoxModel::data(index, role);
}

QHash<int, QByteArray> ProfileBoxModel::roleNames() const
{
    auto names = zel::ProfileBoxModel::roleNames();
    names.insert(PictureRole::role, "icon");
    return names;
}

} // namespace zelquick
