// SPDX-License-Identifier: Apache-2.0
#include <quick/ContextObject.h>

#include <QtQml/QQmlInfo>

namespace zelquick {

ContextObject::ContextObject(QObject* parent)
    : QObject(parent)
{
}

ContextObject::~ContextObject() = default;

void ContextObject::setContext(Context* context)
{
    if (context == m_context && (context || !m_owner)) // one that has died is null by itself
        return;
    m_context = context;
    m_owner.reset(context ? new QObject : nullptr);
    forget();
    if (context && context == m_context) { // who heard of it may have set another one
        QObject* const owner = m_owner.get();
        connect(context, &QObject::destroyed, owner, [this] { setContext(nullptr); });
        const auto startWhenReady = [this, context, owner] {
            zel::whenReady(context->publicContext(), owner,
                           [this, context, owner] { start(context->publicContext(), owner); });
        };
        if (context->publicContext())
            startWhenReady();
        else
            connect(context, &Context::made, owner, startWhenReady);
    }
    Q_EMIT contextChanged();
}

bool ContextObject::isThere(const QObject* object, const char* request) const
{
    if (!object)
        qmlWarning(this) << request << " is refused: the context is not ready; wait for its property \"ready\"";
    return object;
}

} // namespace zelquick
