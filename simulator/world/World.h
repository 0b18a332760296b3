// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/world/Box.h>
#include <simulator/world/EcoIds.h>

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

    World();
    /// A copy that nobody listens to, to try things on.
    World(const World& other)
        : QObject()
        , m(other.m)
    {
    }

    /// As in the beginning. Nobody is told.
    void reset();

    const Permissions& permissions() const { return m.permissions; }
    void setPermissions(const Permissions& permissions);

    /// A sentence when a person's record is too long for a message.
    static QString recordProblem(const Person& person);

    const Person& profile() const { return m.profile; }
    QString setProfile(const Person& profile);
    /// Without \a data the own user has no picture any more.
    QString setProfilePicture(const QByteArray& data);

    /// SHA-1 as lower-case hexadecimal text.
    static QString hashOf(const QByteArray& data);
    /// The MIME type that the first bytes show; "image/jpeg" when they show none.
    static QString mimeTypeOf(const QByteArray& data);
    /// A sentence when \a data is no picture that the service takes.
    static QString pictureProblem(const QByteArray& data);
    /// Keeps \a data and answers its hash.
    QString keepPicture(const QByteArray& data);
    bool hasPicture(const QString& hash) const { return m.pictures.contains(hash); }
    QByteArray picture(const QString& hash) const { return m.pictures.value(hash); }
    /// Keeps \a data and makes it the picture of \a person, who may be anybody; none without data.
    QString givePicture(Person& person, const QByteArray& data);

    // Where a contact is named, the handle does, and so does the user id.

    /// Fills the ids that are missing in \a person.
    QString addContact(Person& person, bool installed);
    /// Replaces the record under the user id of \a person.
    QString changeContact(const Person& person);
    QString removeContact(const QString& contact);
    QString setInstalled(const QString& contact, bool installed);
    QString setContactPicture(const QString& contact, const QByteArray& data);
    /// Null, with a sentence in \a problem, when there is no such contact; until the next change of the contacts.
    const Person* findContact(const QString& contact, QString* problem) const;
    /// Null when nobody has this user id; until the next change of the contacts.
    const Person* contact(const QString& userId) const;
    /// The record as it travels; empty when there is no such contact.
    QByteArray contactJson(const QString& userId) const;
    bool isInstalled(const QString& userId) const;
    /// The user ids of those who run the application, in list order.
    const QList<QString>& installed() const { return m.installed; }
    /// All user ids, in the order in which they were added.
    const QList<QString>& everybody() const { return m.everybody; }
    /// How many contacts there ever were.
    int addedContacts() const { return m.added; }

    // The box: the common one, or that of an application that has one of its own, which is named by its UUID.

    /// That of an application, by its UUID; the common one where it has none of its own.
    const Box& box(const QString& application = QString()) const;
    /// \a application if it has a box of its own; empty, which stands for the common one, if not.
    QString boxOwner(const QString& application) const;

    // Whose box is to change has one of his own from then on, which begins as the common one is.

    /// Gives \a item its id.
    QString addBoxItem(BoxItem& item, const QString& owner = QString());
    QString changeBoxItem(const BoxItem& item, const QString& owner = QString());
    QString removeBoxItem(QString id, const QString& owner = QString());
    void clearBox(const QString& owner = QString());
    QString addBoxIcon(const QString& id, const QByteArray& data, const QString& owner = QString());
    QString removeBoxIcon(QString id, const QString& owner = QString());
    /// Of every box.
    void setBoxLimit(int items);

    QString ecoId(const QString& ppId) const;
    QString ecoIdStatus(const QString& ecoId) const;
    void setEcoId(const QString& ppId, const QString& ecoId);
    /// What is told instead of what the contacts say. One that is pending ends when its owner becomes a contact.
    QString setEcoIdStatus(const QString& ecoId, const QString& status);
    /// The user invited the owner, who is to answer.
    void invite(const QString& ecoId);

Q_SIGNALS:
    void permissionsChanged();
    void profileChanged(const QJsonObject& difference);
    void contactInstalled(const QString& userId);
    void contactUninstalled(const QString& userId);
    void contactChanged(const QString& userId, const QJsonObject& difference);
    /// Of everybody, also those without the application: added, removed, installed, uninstalled, or another record.
    void personChanged(const QString& userId);
    void boxItemAdded(const QString& id, const QString& owner);
    void boxItemChanged(const QString& id, const QString& owner);
    void boxItemRemoved(const QString& id, const QString& owner);
    void boxIconAdded(const QString& id, const QString& owner);
    void boxIconRemoved(const QString& id, const QString& owner);

private:
    struct Contact
    {
        Person person;
        QByteArray json; ///< Ready to travel: serving ten thousand of them must cost next to nothing.
        bool installed = false;
    };

    /// Everything that a copy has, too.
    struct State
    {
        Permissions permissions;
        Person profile;
        QHash<QString, QByteArray> pictures;
        std::unordered_map<QString, Contact> contacts;
        QHash<QString, QString> userIdByHandle;
        QHash<QString, QString> userIdByPpId;
        QList<QString> installed;
        QList<QString> everybody;
        QSet<QString> gone; ///< User ids of removed contacts, whose records applications may still hold.
        Box commonBox;
        QHash<QString, Box> ownBoxes; ///< By UUID.
        EcoIds ecoIds;
        int added = 0;
    };

    Contact* find(const QString& contact, QString* problem);
    const Contact* entry(const QString& userId) const;
    QString contactProblem(const Person& person, const QByteArray& json) const;
    void index(const Person& person);
    void unindex(const Person& person);
    bool isContact(const QString& ppId) const;
    void endPending(const QString& ppId);
    Box& editable(const QString& application);

    State m;
};

} // namespace zelcore
