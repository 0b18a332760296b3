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
template <class Public, class Delegate>
class PrivatePart : public QObject
{
public:
    /// Whether the object may answer what it knows, as things stand.
    bool isAllowed() const { return mistakes::hasAccess(m_className, context) && delegate; }
    /// Whether a request may go out; warns if not, by the name of the call.
    bool mayRequest(const char* where) const { return mistakes::mayRequest(where, context, isAllowed()); }

    Public* const q;
    const QPointer<Context> context; ///< null once it is gone
    Delegate* const delegate;        ///< null in an object that answers defaults for its life

protected:
    /// How the bridge is asked for the delegate.
    using DelegateOf = Delegate* (ServiceBridge::*)() const;

    /// For the public object of that name. Warns of one that is made in a way in which it can never do anything.
    PrivatePart(Public* publicObject, const char* className, Context* givenContext, mistakes::Needs needs,
                DelegateOf delegateOf)
        : QObject(publicObject)
        , q(publicObject)
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
