// SPDX-License-Identifier: Apache-2.0
#include <platform/contacts/ContactListEventHandler.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/contacts/ContactServiceDelegate.h>
#include <splib/contacts/PlatformContact.h>

namespace vx::platform::zel {

using zelsplib::PlatformContact;

void ContactListEventHandler::setContactServiceBridge(ServiceBridge* bridge)
{
    m_delegate = bridge ? bridge->contactService() : nullptr;
}

void ContactListEventHandler::pushGetPlatformContactListEvent(const QList<PlatformContact>& contacts) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushGetPlatformContactListEvent";
    if (m_delegate)
        m_delegate->setContactList(contacts);
}

void ContactListEventHandler::pushPlatformContactListResentEvent() const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactListResentEvent";
    if (m_delegate)
        m_delegate->notifyContactListResent();
}

void ContactListEventHandler::pushPlatformContactInstallAppEvent(const PlatformContact& contact) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactInstallAppEvent";
    if (m_delegate)
        m_delegate->notifyApplicationEnabled(contact);
}

void ContactListEventHandler::pushPlatformContactUninstallAppEvent(const PlatformContact& contact) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactUninstallAppEvent";
    if (m_delegate)
        m_delegate->notifyApplicationDisabled(contact);
}

void ContactListEventHandler::pushPlatformContactUpdateEvent(const PlatformContact&, const PlatformContact& after) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactUpdateEvent";
    if (m_delegate)
        m_delegate->notifyContactUpdated(after);
}

void ContactListEventHandler::pushPlatformContactInvitationReceivedEvent(const PlatformContact& contact) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactInvitationReceivedEvent";
    if (m_delegate)
        m_delegate->notifyInvitationReceived(contact.getHandle());
}

void ContactListEventHandler::pushPlatformContactAvatarChangedEvent(const PlatformContact& contact) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactAvatarChangedEvent";
    if (m_delegate)
        m_delegate->notifyAvatarUpdated(contact.getHandle(), contact.getAvatarId(), contact.getAvatarMimeType(),
                                        contact.getAvatarData());
}

} // namespace vx::platform::zel
