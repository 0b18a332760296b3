// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/Utils.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/ecoid/UtilsDelegate.h>
#include <platform/mistakes/Mistakes.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QPointer>

namespace vx::platform::zel {

class UtilsPrivate : public QObject
{
    Q_OBJECT

public:
    UtilsPrivate(Context* givenContext, Utils* utils)
        : QObject(utils)
        , context(givenContext)
        , q(utils)
        , delegate(givenContext ? ServiceBridge::instance()->utils() : nullptr)
    {
        qCDebug(lcPlatform) << "entering UtilsPrivate::UtilsPrivate";
        mistakes::checkMaking("Utils", givenContext, mistakes::Needs::Context);
        if (!delegate)
            return;
        // What was told last, not what the signal says.
        connect(delegate, &UtilsDelegate::ecoIdUpdated, this,
                [this](const QString& ppId) { Q_EMIT q->ecoIdUpdated(ppId, delegate->toldEcoId(ppId)); });
        connect(delegate, &UtilsDelegate::ecoIdStatusUpdated, this,
                [this](const QString& ecoId) { Q_EMIT q->ecoIdStatusUpdated(ecoId, delegate->toldStatus(ecoId)); });
    }

    bool isAllowed() const { return mistakes::hasAccess("Utils", context) && delegate; }
    /// Whether a request about somebody whom `id` names may be made. One about nobody may, and is told of.
    bool mayRequest(const char* where, const QString& id) const
    {
        if (!mistakes::mayRequest(where, context, isAllowed()))
            return false;
        if (id.isEmpty())
            mistakes::warn(where, "the identifier is empty, so it names nobody; take ppIds from contacts and eco "
                                  "identifiers from ecoIdUpdated()");
        return true;
    }

    QPointer<Context> const context;
    Utils* const q;
    UtilsDelegate* const delegate; // null without a context and without a service
};

Utils::Utils(Context* context, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<UtilsPrivate>(context, this))
{
}

Utils::~Utils() = default;

/// Asks for the eco identifier that belongs to \a ppId; see ecoIdUpdated().
bool Utils::requestEcoId(const QString& ppId)
{
    return d->mayRequest("Utils::requestEcoId", ppId) && d->delegate->ecoIdRequest(ppId);
}

/// Asks how the user stands with an eco identifier's owner; see ecoIdStatusUpdated(). False also for an empty one.
bool Utils::requestEcoIdStatus(const QString& ecoId)
{
    return d->mayRequest("Utils::requestEcoIdStatus", ecoId) && d->delegate->ecoIdStatusRequest(ecoId);
}

/// Has the messaging application invite the owner of \a ecoId to become a contact. \a displayName is the user's own
/// name, by which the invited person learns who invites, as UserProfile::displayName() has it; \a message is what the
/// user says to them. False also when that application cannot be reached.
bool Utils::sendContactInvitation(const QString& ecoId, const QString& displayName, const QString& message)
{
    return d->mayRequest("Utils::sendContactInvitation", ecoId) &&
           d->delegate->sendContactInvitation(ecoId, displayName, message);
}

/// Has the messaging application open a chat with the owner of \a ecoId. False also when that application cannot be
/// reached.
bool Utils::invokeChat(const QString& ecoId)
{
    return d->mayRequest("Utils::invokeChat", ecoId) && d->delegate->invokeChat(ecoId);
}

} // namespace vx::platform::zel

#include "Utils.moc"
