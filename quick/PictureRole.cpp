// SPDX-License-Identifier: Apache-2.0
#include <quick/PictureRole.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace zelquick {

PictureRole::PictureRole(zel::RecordListModel* model, PictureStore::Kind kind, const char* name,
                         std::function<void(zel::Context*)> give)
    : m_model(model)
    , m_kind(kind)
    , m_nameRole(model->role(name))
    , m_give(std::move(give))
{
}

bool PictureRole::setContext(Context* context)
{
    if (context == m_context)
        return false;
    m_context = context;
    m_link = std::make_unique<QObject>();
    if (context) {
        QObject::connect(context, &Context::made, m_link.get(), [this, context] { m_give(context->publicContext()); });
        QObject::connect(&context->pictures(), &PictureStore::renewed, m_link.get(),
                         [this](PictureStore::Kind kind, const QString& name) {
                             if (kind == m_kind)
                                 renew(name);
                         });
    }
    m_give(context ? context->publicContext() : nullptr);
    return true;
}

QUrl PictureRole::urlOf(const QModelIndex& index) const
{
    const QString name = nameOf(index);
    const bool isNone = name.isEmpty() || (m_kind == PictureStore::Kind::Icon && name == "-1"_L1);
    return m_context && !isNone ? m_context->pictures().urlOf(m_kind, name) : QUrl();
}

/// Contacts are found by their key; of items any number may have one icon, but there are few.
void PictureRole::renew(const QString& name)
{
    const bool isKey = m_kind == PictureStore::Kind::Contact;
    const int first = isKey ? m_model->rowOf(name) : 0;
    const int last = isKey ? first : m_model->count() - 1;
    for (int row = first; row >= 0 && row <= last; ++row) {
        const QModelIndex index = m_model->index(row);
        if (nameOf(index) == name)
            Q_EMIT m_model->dataChanged(index, index, {role});
    }
}

} // namespace zelquick
