// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/Context.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/context/ApplicationDelegate.h>
#include <platform/mistakes/Mistakes.h>

#include <QtCore/QPointer>

#include <utility>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

class ContextPrivate : public QObject
{
    Q_OBJECT

public:
    ContextPrivate(const QUuid& applicationUuid, Context* context)
        : QObject(context)
        , uuid(applicationUuid)
        , q(context)
        , delegate(ServiceBridge::instance()->registrar())
        , m_wasReady(delegate->isReady())
    {
        connect(delegate, &ApplicationDelegate::registrationEventReceived, this,
                &ContextPrivate::registrationEventReceived);
        mistakes::isRightThread("Context");
        remarkThatAllIsTold();
    }

    bool requestRegistration(bool silent)
    {
        mistakes::isRightThread("Context");
        if (uuid.isNull()) {
            mistakes::warn(registering, "the UUID is null, as one made of text that is none; give the context the one "
                                        "of the application");
            delegate->notifyRegistrationEvent(u"InvalidUuid"_s);
            return false;
        }
        return delegate->registerApplication(uuid, silent) || mistakes::warn(registering, whyNotNow());
    }

    /// Whoever waits for a state, as the application before did, waits in vain: a test that makes the application anew
    /// for each function is told at once.
    void remarkThatAllIsTold() const
    {
        const bool isSuccessor = hold.use_count() == 2; // the bridge's and this
        if (isSuccessor && delegate->registrationAccessState() == RegistrationState::Allowed)
            mistakes::remark("Context", "the process is registered already, and registrationStateUpdated() tells "
                                        "changes only; use whenReady(), and in a test a zelcore::TestService for each "
                                        "function");
    }

    QUuid const uuid;
    Context* const q;
    const std::shared_ptr<const void> hold = ServiceBridge::instance()->hold();
    ApplicationDelegate* const delegate;

public Q_SLOTS:
    void registrationEventReceived(vx::platform::zel::RegistrationState::Type state)
    {
        const QPointer<ContextPrivate> alive(this); // a slot may destroy the context
        // What was told last, not what this signal says: where a slot of another context has spun an event loop
        // meanwhile, that is older. A UUID that was refused here is no state that could be.
        Q_EMIT q->registrationStateUpdated(state == RegistrationState::InvalidUuid ? state : delegate->toldState());
        if (alive)
            announceReady();
    }

private:
    static constexpr const char* registering = "Context::requestRegisterApplication";

    QString whyNotNow() const
    {
        const RegistrationState::Type state = q->registrationState();
        const bool isTaken = state == RegistrationState::Allowed || state == RegistrationState::Pending;
        const QUuid taken = delegate->requestedUuid();
        if (isTaken && !taken.isNull() && taken != uuid)
            return u"the process is the application %1 already, with all of its contexts; give them one "
                   "UUID, or run the other application as another process"_s.arg(taken.toString(QUuid::WithoutBraces));
        if (const QString reason = mistakes::whyNothingIsPossible(state); !reason.isEmpty())
            return reason;
        switch (state) {
        case RegistrationState::Allowed:
            return u"the application is registered already; whenReady() tells when it can be used"_s;
        case RegistrationState::Pending:
            return u"a registration is under way; wait for registrationStateUpdated()"_s;
        default:
            return u"the registration state is %1, which does not allow it; request it in one of those "
                   "that do, such as Unregistered"_s.arg(mistakes::nameOf(state));
        }
    }

    /// Whatever turns it is a registration event, too.
    void announceReady()
    {
        const bool isReady = delegate->isReady();
        if (std::exchange(m_wasReady, isReady) != isReady)
            Q_EMIT q->readyChanged(Context::QPrivateSignal());
    }

    bool m_wasReady;
};

Context::Context(const QUuid& uuid, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<ContextPrivate>(uuid, this))
{
}

Context::~Context() = default;

/// Asks the service to register the application; it may ask the user. What comes of it shows in
/// registrationStateUpdated().
///
/// False when the request was not made: the UUID is null, in which case every context of the process announces
/// InvalidUuid before this returns; or the present state does not allow it (only Unregistered, NoDataConnection,
/// UnexpectedError, InvalidUuid, TemporaryError and CancelledByUser do), in which case no signal follows.
bool Context::requestRegisterApplication()
{
    return d->requestRegistration(false);
}

/// The same, but the service must not bother the user.
bool Context::requestRegisterApplicationSilent()
{
    return d->requestRegistration(true);
}

/// What the service said last. Unknown before it said anything, BlockedByUser when there was none to be opened.
RegistrationState::Type Context::registrationState() const
{
    return d->delegate->registrationAccessState();
}

/// Whether the service's last word is Allowed, and the other public classes give access. It turns true before
/// registrationStateUpdated(Allowed) comes, and false right with any other state.
bool Context::isAccessAllowed() const
{
    return registrationState() == RegistrationState::Allowed;
}

/// Whether access is allowed and everything is in that registrationStateUpdated(Allowed) waits for: true in the slot of
/// that signal and in whatever is called after it, false again with any other state. It says the same in every context
/// of the process, also in one that is made later.
bool Context::isReady() const
{
    return d->delegate->isReady();
}

/// The version of this library, 200. UserProfile::sdkVersion() is the same number.
int Context::platformVersion() const
{
    return 200;
}

/// Whether the messaging service is set up on the device. False before the service said so. No signal tells when only
/// this changes.
bool Context::isZelSetup() const
{
    return d->delegate->isZelSetup();
}

void detail::callWhenReady(Context* context, const QObject* receiver, const std::function<void()>& function)
{
    if (!context || !receiver) {
        mistakes::warn("whenReady", "there is no context or no receiver, so nothing will be called; give it both");
        return;
    }
    mistakes::isRightThread("whenReady");
    if (context->isReady()) {
        function();
        return;
    }
    // Asks again when it is told: where a slot before this one has spun an event loop, it may be over by then.
    QObject::connect(
        context, &Context::readyChanged, receiver,
        [context, receiver, function] { callWhenReady(context, receiver, function); }, Qt::SingleShotConnection);
}

} // namespace vx::platform::zel

#include "Context.moc"
