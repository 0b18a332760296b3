// SPDX-License-Identifier: Apache-2.0
#include <quick/ContactListModel.h>

namespace zelquick {

ContactListModel::ContactListModel(QObject* parent)
    : zel::ContactListModel(nullptr, parent)
    , m_pictures(this, PictureStore::Kind::Contact, "handle",
                 [this](zel::Context* context) { zel::ContactListModel::setContext(context); })
{
}

void ContactListModel::setContext(Context* context)
{
    if (m_pictures.setContext(context))
        Q_EMIT contextChanged();
}

QVariant ContactListModel::data(const QModelIndex& index, int role) const
{
    return role == PictureRole::role ? m_pictures.urlOf(index) : zel::ContactListModel::data(index, role);
}

QHash<int, QByteArray> ContactListModel::roleNames() const
{
    auto names = zel::ContactListModel::roleNames();
    names.insert(PictureRole::role, "picture");
    return names;
}

} // namespace zelquick
