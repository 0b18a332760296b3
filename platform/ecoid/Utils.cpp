// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/Utils.h>

#include <platform/channel/Trace.h>
#include <platform/context/PrivatePart.h>
#include <platform/ecoid/UtilsDelegate.h>

namespace vx::platform::zel {

class UtilsPrivate : public PrivatePart<Utils, UtilsDelegate>
{
    Q_OBJECT

public:
    UtilsPrivate(Context* givenContext, Utils* utils)
        : PrivatePart(utils, "Utils", givenContext, mistakes::Needs::Context, &ServiceBridge::utils)
    {
        qCDebug(lcPlatform) << "entering UtilsPrivate::UtilsPrivate";
        if (!delegate)
            return;
        // What was told last, not what the signal says.
        connect(delegate, &UtilsDelegate::ecoIdUpdated, this,
                [this](const QString& ppId) { Q_EMIT q->ecoIdUpdated(ppId, delegate->toldEcoId(ppId)); });
        connect(delegate, &UtilsDelegate::ecoIdStatusUpdated, this,
                [this](const QString& ecoId) { Q_EMIT q->ecoIdStatusUpdated(ecoId, delegate->toldStatus(ecoId)); });
    }

    /// Whether a request about somebody whom `id` names may be made. One about nobody may, and is told of.
    bool mayRequestAbout(const QString& id, const char* where) const
    {
        if (!mayRequest(where))
            return false;
        if (id.isEmpty())
            mistakes::warn(where, "the identifier is empty, so it names nobody; take ppIds from contacts and eco "
                                  "identifiers from ecoIdUpdated()");
        return true;
    }
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
    return d->mayRequestAbout(ppId, "Utils::requestEcoId") && d->delegate->ecoIdRequest(ppId);
}

/// Asks how the user stands with an eco identifier's owner; see ecoIdStatusUpdated(). False also for an empty one.
bool Utils::requestEcoIdStatus(const QString& ecoId)
{
    return d->mayRequestAbout(ecoId, "Utils::requestEcoIdStatus") && d->delegate->ecoIdStatusRequest(ecoId);
}

/// Has the messaging application invite the owner of \a ecoId to become a contact. \a displayName is the user's own
/// name, by which the invited person learns who invites, as UserProfile::displayName() has it; \a message is what the
/// user says to them. False also when that application cannot be reached.
bool Utils::sendContactInvitation(const QString& ecoId, const QString& displayName, const QString& message)
{
    return d->mayRequestAbout(ecoId, "Utils::sendContactInvitation") &&
           d->delegate->sendContactInvitation(ecoId, displayName, message);
}

/// Has the messaging application open a chat with the owner of \a ecoId. False also when that application cannot be
/// reached.
bool Utils::invokeChat(const QString& ecoId)
{
    return d->mayRequestAbout(ecoId, "Utils::invokeChat") && d->delegate->invokeChat(ecoId);
}

} // namespace vx::platform::zel

#include "Utils.moc"
