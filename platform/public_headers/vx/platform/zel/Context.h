// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/RegistrationState.h>
#include <iface/Export.h>

#include <QtCore/QObject>
#include <QtCore/QUuid>

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace vx::platform::zel {

class ContextPrivate;

/// The first object an application makes: it carries the application's UUID, asks the messaging service to register
/// the application and tells how that stands. Every other public class takes a Context and works only while its
/// isAccessAllowed() is true.
///
/// Any number of contexts may exist. They share one connection to the service, which the first public object of any
/// kind opens and which lasts at least as long as the process has a context; each context hears every registration
/// event. The application owns its contexts. Other public objects hold theirs guarded: after a context is gone they
/// answer as without access.
/// Destroying a context does not unregister anything.
///
/// A service that is not there when the first public object is made is never looked for again: the state is
/// BlockedByUser for as long as the process has a context. One that goes away later and comes back is picked up by
/// itself.
///
/// Thread: the application's event loop thread, the one that makes the first public object. Nothing arrives unless
/// that loop runs. Inside a slot anything may be done: make and destroy public objects, this context included, send
/// requests, run a nested event loop (a dialog), in which further events arrive. Slots behind it are called when that
/// loop has ended: what a signal carries may be older by then than what the readers answer. To the slots of another
/// object it carries what was told last.
///
/// A process that ends its QCoreApplication may make another. With a context that lives on, the connection is read on
/// with that one; what the first had still to do is lost with it, such as asking again for what has had no answer.
/// Without a context everything is forgotten, the registration too, and the next context begins as in a new process.
///
/// Two things to know:
/// - Registration can be requested only after the service has told how things stand: until then
///   requestRegisterApplication() answers false. Wait for the first registrationStateUpdated(), and look at its state.
/// - isAccessAllowed() turns true with the service's answer, before registrationStateUpdated(Allowed), which is held
///   back until the user's own profile, picture and (where the application may show one) profile box have come, and
///   comes only while that is the state. Make the other public objects when the context is ready, which is from that
///   signal on, not as soon as isAccessAllowed() happens to be true: whenReady() calls a function then, or now if it
///   is. A UserProfile, a ContactService or ApplicationPermissions made while access is not allowed answer defaults for
///   their life.
///
/// \code
/// Context context(QUuid("6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10"));
/// QObject::connect(&context, &Context::registrationStateUpdated, &app, [&](RegistrationState::Type state) {
///     if (state == RegistrationState::Unregistered)
///         context.requestRegisterApplication();
/// });
/// whenReady(&context, &app, [&] { start(); });
/// \endcode
class ZEL_EXPORT Context : public QObject
{
    Q_OBJECT
    Q_PROPERTY(vx::platform::zel::RegistrationState::Type registrationState READ registrationState NOTIFY
                   registrationStateUpdated)
    Q_PROPERTY(bool accessAllowed READ isAccessAllowed NOTIFY registrationStateUpdated)
    Q_PROPERTY(bool ready READ isReady NOTIFY readyChanged)
    Q_PROPERTY(bool zelSetup READ isZelSetup NOTIFY registrationStateUpdated)
    Q_PROPERTY(int platformVersion READ platformVersion CONSTANT)

public:
    /// The context of the application that goes by \a uuid, which every registration carries; \a parent may own it.
    explicit Context(const QUuid& uuid, QObject* parent = nullptr);
    ~Context() override;

    bool requestRegisterApplication();
    bool requestRegisterApplicationSilent();
    RegistrationState::Type registrationState() const;
    bool isAccessAllowed() const;
    bool isReady() const;
    int platformVersion() const;
    bool isZelSetup() const;

Q_SIGNALS:
    /// The service announced \a state, or a null UUID was refused (InvalidUuid, which changes nothing at
    /// the service). registrationState() already answers what the service said last; for Allowed it may have done so
    /// for a while. The same state may be announced again.
    void registrationStateUpdated(vx::platform::zel::RegistrationState::Type state);
    /// isReady() is another answer than before. After the registrationStateUpdated() that brought it about.
    void readyChanged(QPrivateSignal);

private:
    friend class ContextPrivate;
    std::unique_ptr<ContextPrivate> const d;
};

namespace detail {
ZEL_EXPORT void callWhenReady(Context* context, const QObject* receiver, const std::function<void()>& function);
}

/// Calls \a function once: now if \a context is ready, else as soon as it is, right after registrationStateUpdated().
/// Whichever of \a context and \a receiver is destroyed first takes the call with it. The function is anything that can
/// be called without arguments, or a member of the receiver. All of it belongs to the thread of the context.
template <typename Receiver, typename Function>
requires(std::is_base_of_v<QObject, Receiver> &&
         (std::is_invocable_v<Function&> ||
          std::is_invocable_v<Function&, Receiver*>)) void whenReady(Context* context, Receiver* receiver,
                                                                     Function function)
{
    if constexpr (std::is_invocable_v<Function&>)
        detail::callWhenReady(context, receiver, std::move(function));
    else
        detail::callWhenReady(context, receiver, [receiver, function] { std::invoke(function, receiver); });
}

} // namespace vx::platform::zel
