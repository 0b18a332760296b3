// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContactManagerBase.h>

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

/// The contacts who also run the application, reported to an event handler that it holds by value.
///
/// The contract is the base's; this class only names whom the reports go to.
template <ContactListEvents EventHandler>
class PlatformContactManager final : public PlatformContactManagerBase
{
public:
    using PlatformContactManagerBase::PlatformContactManagerBase;

    EventHandler& eventHandler() { return m_eventHandler; }

private:
    void reportList(const QList<PlatformContact>& contacts) override
    {
        m_eventHandler.pushGetPlatformContactListEvent(contacts);
    }
    void reportListResent() override { m_eventHandler.pushPlatformContactListResentEvent(); }
    void reportInstalled(const PlatformContact& contact) override
    {
        m_eventHandler.pushPlatformContactInstallAppEvent(contact);
    }
    void reportUninstalled(const PlatformContact& contact) override
    {
        m_eventHandler.pushPlatformContactUninstallAppEvent(contact);
    }
    void reportUpdated(const PlatformContact& before, const PlatformContact& after) override
    {
        m_eventHandler.pushPlatformContactUpdateEvent(before, after);
    }
    void reportInvitation(const PlatformContact& contact) override
    {
        m_eventHandler.pushPlatformContactInvitationReceivedEvent(contact);
    }
    void reportAvatar(const PlatformContact& contact) override
    {
        m_eventHandler.pushPlatformContactAvatarChangedEvent(contact);
    }

    EventHandler m_eventHandler;
};

} // namespace zelsplib
