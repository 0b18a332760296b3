// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>

#include <QtCore/QList>

#include <concepts>

namespace zelsplib {

/// What the contact manager reports to: the whole list, that the service has sent it again, a contact that got, lost or
/// changed the application's profile, an invitation from one, and a picture that arrived.
template <class Handler>
concept ContactListEvents = std::default_initializable<Handler> &&
    requires(Handler& handler, const QList<PlatformContact>& contacts, const PlatformContact& contact)
{
    handler.pushGetPlatformContactListEvent(contacts);
    handler.pushPlatformContactListResentEvent();
    handler.pushPlatformContactInstallAppEvent(contact);
    handler.pushPlatformContactUninstallAppEvent(contact);
    handler.pushPlatformContactUpdateEvent(contact, contact);
    handler.pushPlatformContactInvitationReceivedEvent(contact);
    handler.pushPlatformContactAvatarChangedEvent(contact);
};

} // namespace zelsplib
