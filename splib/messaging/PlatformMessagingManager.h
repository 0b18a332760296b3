// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>

#include <zel/JsonStream.h>
#include <zel/ListApiMultiplexer.h>

#include <iface/ObservableList.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <concepts>

namespace zelsplib {

/// Hears of connections between users of the application. None are reported yet.
template <typename T>
concept ConnectionEvents = std::default_initializable<T>;

/// Hands invitations and chats to the other applications of the device; each answers whether one took it.
template <typename T>
concept InvocationRequests = std::default_initializable<T> &&
    requires(T invoker, const QString& ecoId, const QString& displayName, const QString& message)
{
    {
        invoker.sendContactInvitation(ecoId, displayName, message)
        } -> std::same_as<bool>;
    {
        invoker.invokeChat(ecoId)
        } -> std::same_as<bool>;
};

/// The way from an application to the messaging application: invitations and chats. Owned by the facade; holds its
/// event handler and its invoker by value. Used on the thread of the event loop.
template <ConnectionEvents Connections, InvocationRequests Invocations>
class PlatformMessagingManager final
{
public:
    /// Made from what every manager is made from; invitations and chats need neither.
    PlatformMessagingManager(const QSharedPointer<zel::ListApiMultiplexer>&, const QSharedPointer<zel::JsonStream>&) {}

    /// Shares the contact manager's list. Called once, by the facade.
    void init(const iface::ObservableList<PlatformContact>& contacts) { m_contacts = contacts; }
    iface::ObservableList<PlatformContact> contactList() const { return m_contacts; }

    bool sendZELInvite(const QString& ecoId, const QString& displayName, const QString& message)
    {
        return m_invocations.sendContactInvitation(ecoId, displayName, message);
    }
    bool invokeChat(const QString& ecoId) { return m_invocations.invokeChat(ecoId); }

    Connections& connectionEventHandler() { return m_connections; }
    Invocations& invocationManager() { return m_invocations; }

private:
    Connections m_connections;
    Invocations m_invocations;
    iface::ObservableList<PlatformContact> m_contacts;
};

} // namespace zelsplib
