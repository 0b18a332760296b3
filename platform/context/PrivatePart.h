// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/ServiceBridge.h>
#include <platform/mistakes/Mistakes.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>

namespace vx::platform::zel {

/// What the private parts of public objects have in common: the context that the object was made with, and the delegate
/// that the bridge has for it.
///
/// The delegate is taken once and never again: an object that was made without a context or a service, or without the
/// access that it needs to be made, answers defaults for its life.
template <class Delegate>
class PrivatePart : public QObject
{
public:
    bool isAllowed() const { return mistakes::hasAccess(m_className, context) && delegate; }
    bool mayRequest(const char* where) const { return mistakes::mayRequest(where, context, isAllowed()); }

    const QPointer<Context> context;
    Delegate* const delegate; ///< null in an object that answers defaults for its life

protected:
    using DelegateOf = Delegate* (ServiceBridge::*)() const;

    PrivatePart(QObject* publicObject, const char* className, Context* givenContext, mistakes::Needs needs,
                DelegateOf delegateOf)
        : QObject(publicObject)
        , context(givenContext)
        , delegate(mistakes::checkMaking(className, context, needs) ? (ServiceBridge::instance()->*delegateOf)()
                                                                    : nullptr)
        , m_className(className)
    {
    }

private:
    const char* const m_className;
};

} // namespace vx::platform::zel
