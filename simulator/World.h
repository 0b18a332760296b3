// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QSet>

#include <unordered_map>

namespace zelcore {

/// What the core service knows: the user, the people, the box, the pictures. It knows nothing of messages and of who
/// is listening; every change is a signal, emitted when the change is complete.
///
/// Operations that can be refused answer an empty text when done, else the sentence that says why not, and then have
/// changed nothing.
class World : public QObject
{
    Q_OBJECT
public:
    /// Pictures and icons are 1 to this many bytes.
    static constexpr qsizetype largestPicture = 32768;

    explicit World(QObject* parent = nullptr);

    const Permissions& permissions() const { return m_permissions; }
    void setPermissions(const Permissions& permissions);

    /// A sentence when a person's record is too long for a message.
    static QString recordProblem(const Person& person);

    const Person& profile() const { return m_profile; }
    QString setProfile(const Person& profile);

    /// SHA-1 as lower-case hexadecimal text.
    static QString hashOf(const QByteArray& data);
    /// The MIME type that the first bytes show; "image/jpeg" when they show none.
    static QString mimeTypeOf(const QByteArray& data);
    /// A sentence when \a data is no picture that the service takes.
    static QString pictureProblem(const QByteArray& data);
    /// Keeps \a data and answers its hash.
    QString keepPicture(const QByteArray& data);
    bool hasPicture(const QString& hash) const { return m_pictures.contains(hash); }
    QByteArray picture(const QString& hash) const { return m_pictures.value(hash); }

    /// Fills the ids that are missing in \a person.
    QString addContact(Person& person, bool installed);
    QString changeContact(const Person& person);
    QString removeContact(const QString& userId);
    QString setInstalled(const QString& userId, bool installed);
    /// Null when there is no such contact; until the next change of the contacts.
    const Person* contact(const QString& userId) const;
    const Person* contactByHandle(const QString& handle) const;
    /// The record as it travels; empty when there is no such contact.
    QByteArray contactJson(const QString& userId) const;
    bool isInstalled(const QString& userId) const;
    /// The user ids of those who run the application, in list order.
    const QList<QString>& installed() const { return m_installed; }
    /// All user ids, in the order in which they were added.
    const QList<QString>& everybody() const { return m_everybody; }
    /// How many contacts there ever were.
    int addedContacts() const { return m_added; }

    const QList<BoxItem>& boxItems() const { return m_items; }
    const QList<BoxIcon>& boxIcons() const { return m_icons; }
    /// Gives \a item its id.
    QString addBoxItem(BoxItem& item);
    QString changeBoxItem(const BoxItem& item);
    QString removeBoxItem(const QString& id);
    /// Whether an icon of this id may be registered now.
    QString boxIconProblem(const QString& id) const;
    QString addBoxIcon(const QString& id, const QByteArray& data);
    QString removeBoxIcon(const QString& id);
    /// Null when there is none; until the next change of the box.
    const BoxIcon* boxIcon(const QString& id) const;

    QString ecoId(const QString& ppId) const;
    QString ecoIdStatus(const QString& ecoId) const;
    void setEcoId(const QString& ppId, const QString& ecoId);
    void setEcoIdStatus(const QString& ecoId, const QString& status);

Q_SIGNALS:
    void permissionsChanged();
    void profileChanged(const QJsonObject& difference);
    void contactInstalled(const QString& userId);
    void contactUninstalled(const QString& userId);
    void contactChanged(const QString& userId, const QJsonObject& difference);
    void boxItemAdded(const zelcore::BoxItem& item);
    void boxItemChanged(const zelcore::BoxItem& item);
    void boxItemRemoved(const QString& id);
    void boxIconAdded(const zelcore::BoxIcon& icon);
    void boxIconRemoved(const QString& id);

private:
    struct Contact
    {
        Person person;
        QByteArray json; ///< Ready to travel: serving ten thousand of them must cost next to nothing.
        bool installed = false;
    };

    QString contactProblem(const Person& person, const QByteArray& json) const;
    void index(const Person& person);
    void unindex(const Person& person);
    QString boxItemProblem(const BoxItem& item) const;

    Permissions m_permissions;
    Person m_profile;
    QHash<QString, QByteArray> m_pictures;
    std::unordered_map<QString, Contact> m_contacts;
    QHash<QString, QString> m_userIdByHandle;
    QList<QString> m_installed;
    QList<QString> m_everybody;
    QSet<QString> m_gone; ///< User ids of removed contacts, whose records applications may still hold.
    QList<BoxItem> m_items;
    QList<BoxIcon> m_icons;
    QHash<QString, QString> m_ecoIds;
    QHash<QString, QString> m_ecoIdStates;
    QHash<QString, QString> m_userIdByPpId;
    quint64 m_nextItem = 1;
    int m_added = 0;
};

} // namespace zelcore
