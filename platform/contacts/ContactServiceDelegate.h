// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/Services.h>
#include <platform/channel/ToldLast.h>
#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/ImageType.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
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
    /// Whether the list that was set last had the record of every contact.
    bool isContactListComplete() const { return m_complete; }
    bool containsContact(const Contact& contact) const { return find(contact.handle()) != nullptr; }
    Contact contact(const QString& handle) const;
    int contactCount() const { return static_cast<int>(m_contacts.size()); }
    /// In handle order.
    QList<Contact> allContacts() const { return m_contacts; }
    bool requestAvatar(const QString& handle) const;
    /// Whether the contact with this handle has the application by now; the map keeps those who removed it.
    bool hasApplication(const QString& handle) const;
    void readContactList();

    void setContactList(const QList<zelsplib::PlatformContact>& records);
    void notifyContactListResent() { Q_EMIT contactListResent(); }
    void notifyApplicationEnabled(const zelsplib::PlatformContact& record) { Q_EMIT applicationEnabled(store(record)); }
    /// The contact stays in the map: only the next list that is set takes it out.
    void notifyApplicationDisabled(const zelsplib::PlatformContact& record)
    {
        Q_EMIT applicationDisabled(record.getHandle());
    }
    void notifyContactUpdated(const zelsplib::PlatformContact& record) { Q_EMIT contactUpdated(store(record)); }
    void notifyAvatarUpdated(const QString& handle, const QString& avatarId, const QString& mimeType,
                             const QByteArray& data);
    void notifyInvitationReceived(const QString& handle) { Q_EMIT invitationReceived(handle); }

    struct Picture
    {
        ImageType::Type type = ImageType::Unsupported;
        QByteArray data;
    };
    /// The picture of the contact that avatarUpdated() is about, as it was told last.
    Picture toldPicture(const QString& handle) const { return m_toldPictures.of(handle); }

public Q_SLOTS:
    void updateContactList();

Q_SIGNALS:
    void contactListUpdated();
    void contactListResent();
    void contactUpdated(QString handle);
    void applicationEnabled(QString handle);
    void applicationDisabled(QString handle);
    void avatarUpdated(QString handle, vx::platform::zel::ImageType::Type avatarMimeType, QByteArray avatar);
    void invitationReceived(QString handle);

private:
    /// Where the contact with the handle is, or would be.
    int placeOf(const QString& handle) const;
    const Contact* find(const QString& handle) const;
    static QList<Contact> inHandleOrder(const QList<zelsplib::PlatformContact>& records);
    QString store(const zelsplib::PlatformContact& record);

    Services* const m_services;
    bool m_initialized = false;
    bool m_complete = false;
    /// In handle order. A list takes a tenth of a map's memory, and handing it out whole copies nothing.
    QList<Contact> m_contacts;
    ToldLast<QString, Picture> m_toldPictures;
};

} // namespace vx::platform::zel
