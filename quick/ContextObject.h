// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/Context.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <memory>

namespace zelquick {

/// What the types have in common that work through a context: the public object beneath is made when the context is
/// ready, and made anew for another context. Until then readers answer defaults and requests are refused, with a
/// warning.
///
/// The types name their bases in full: what describes them to QML's tools knows classes by that name alone.
class ContextObject : public QObject
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(zelquick::Context* context READ context WRITE setContext NOTIFY contextChanged REQUIRED FINAL)

public:
    explicit ContextObject(QObject* parent = nullptr);
    ~ContextObject() override;

    Context* context() const { return m_context; }
    void setContext(Context* context);

Q_SIGNALS:
    void contextChanged();

protected:
    /// The context is ready. What is made is a child of \a owner, which goes with the context or when there is another.
    virtual void start(zel::Context* context, QObject* owner) = 0;
    /// There is another context, or none: what was made is gone.
    virtual void forget() = 0;
    /// Says why \a request is refused, if it is because of \a object, which is not there yet. Whether it is there.
    bool isThere(const QObject* object, const char* request) const;

private:
    QPointer<Context> m_context;
    std::unique_ptr<QObject> m_owner;
};

} // namespace zelquick
