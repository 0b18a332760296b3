// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/ContactListEvents.h>
#include <splib/contacts/PlatformContactManagerBase.h>

namespace zelsplib {

/// The contacts who also run the application, reported to an event handler that it holds by value.
///
/// The contract is the base's; this class only names whom the reports go to.
template <ContactListEvents EventHandler>
class PlatformContactManager final : public PlatformContactManagerBase
{
public:
    PlatformContactManager(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
                           const QSharedPointer<zel::JsonStream>& stream, RegistrationHandler* readiness,
                           QObject* parent = nullptr)
        : PlatformContactManagerBase(multiplexer, stream, readiness, parent)
    {
    }

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
