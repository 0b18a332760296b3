// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/Services.h>
#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/ImageType.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace vx::platform::zel {

/// The contacts, by handle, for all contact services of the process. Made and owned by the bridge; lives on its thread.
/// Its signals come when the map shows what they tell; a slot may do anything.
class ContactServiceDelegate : public QObject
{
    Q_OBJECT

public:
    ContactServiceDelegate(Services* services, QObject* parent);

    /// Whether a list has been set; never turns back.
    bool isContactListInitialized() const { return m_initialized; }
    bool containsContact(const Contact& contact) const { return m_contacts.contains(contact.handle()); }
    Contact contact(const QString& handle) const;
    int contactCount() const { return static_cast<int>(m_contacts.size()); }
    /// In handle order.
    QList<Contact> allContacts() const { return m_contacts.values(); }
    bool requestAvatar(const QString& handle) const;

    void setContactList(const QList<zelsplib::PlatformContact>& records);
    void notifyApplicationEnabled(const zelsplib::PlatformContact& record);
    void notifyApplicationDisabled(const zelsplib::PlatformContact& record);
    void notifyContactUpdated(const zelsplib::PlatformContact& record);
    void notifyAvatarUpdated(const QString& handle, const QString& avatarId, const QString& mimeType,
                             const QByteArray& data);
    void notifyInvitationReceived(const QString& handle);

public Q_SLOTS:
    void updateContactList();

Q_SIGNALS:
    void contactListUpdated();
    void contactUpdated(QString handle);
    void applicationEnabled(QString handle);
    void applicationDisabled(QString handle);
    void avatarUpdated(QString handle, vx::platform::zel::ImageType::Type avatarMimeType, QByteArray avatar);
    void invitationReceived(QString handle);

private:
    QString store(const zelsplib::PlatformContact& record);

    Services* const m_services;
    bool m_initialized = false;
    QMap<QString, Contact> m_contacts;
};

} // namespace vx::platform::zel
