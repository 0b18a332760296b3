// SPDX-License-Identifier: Apache-2.0
#include <simulator/world/World.h>

#include <simulator/world/PersonJson.h>
#include <simulator/wire/Wire.h>

#include <QtCore/QCryptographicHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

QString tooLong(const QByteArray& json)
{
    return json.size() <= wire::largestElement
               ? QString()
               : u"the record would take %1 bytes, a message has room for %2"_s.arg(json.size())
                     .arg(wire::largestElement);
}

/// What the own user looks like until somebody says otherwise; the picture is a real one, a single pixel.
Person defaultProfile(World& world)
{
    Person person;
    person.userId = u"user-robin"_s;
    person.handle = u"robin"_s;
    person.ppId = u"pp-robin"_s;
    person.appVersion = u"1.0"_s;
    person.displayName = u"Robin Vale"_s;
    person.personalMessage = u"Out and about"_s;
    person.statusMessage = u"Available"_s;
    person.timeZone = u"Europe/Berlin"_s;
    person.countryCode = u"DE"_s;
    person.clientVersion = 700;
    person.avatarId = world.keepPicture(
        QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJ"
                               "RU5ErkJggg=="));
    person.avatarMimeType = u"image/png"_s;
    return person;
}

} // namespace

World::World()
{
    reset();
}

void World::reset()
{
    m = State();
    m.profile = defaultProfile(*this);
}

void World::setPermissions(const Permissions& permissions)
{
    if (permissions == m.permissions)
        return;
    m.permissions = permissions;
    Q_EMIT permissionsChanged();
}

QString World::recordProblem(const Person& person)
{
    return tooLong(wire::text(personToJson(person)));
}

QString World::setProfile(const Person& profile)
{
    const QString problem = recordProblem(profile);
    if (!problem.isEmpty())
        return problem;
    const QJsonObject difference = personDifference(m.profile, profile);
    m.profile = profile;
    if (!difference.isEmpty())
        Q_EMIT profileChanged(difference);
    return {};
}

QString World::setProfilePicture(const QByteArray& data)
{
    Person person = m.profile;
    const QString problem = givePicture(person, data);
    return problem.isEmpty() ? setProfile(person) : problem;
}

QString World::hashOf(const QByteArray& data)
{
    return QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex());
}

QString World::mimeTypeOf(const QByteArray& data)
{
    if (data.startsWith("\x89PNG"))
        return u"image/png"_s;
    if (data.startsWith("GIF8"))
        return u"image/gif"_s;
    if (data.startsWith("BM"))
        return u"image/bmp"_s;
    return u"image/jpeg"_s;
}

QString World::pictureProblem(const QByteArray& data)
{
    return !data.isEmpty() && data.size() <= largestPicture
               ? QString()
               : u"a picture has 1 to %1 bytes, not %2"_s.arg(largestPicture).arg(data.size());
}

QString World::keepPicture(const QByteArray& data)
{
    const QString hash = hashOf(data);
    m.pictures.insert(hash, data);
    return hash;
}

QString World::givePicture(Person& person, const QByteArray& data)
{
    const QString problem = data.isEmpty() ? QString() : pictureProblem(data);
    if (problem.isEmpty()) {
        person.avatarId = data.isEmpty() ? QString() : keepPicture(data);
        person.avatarMimeType = data.isEmpty() ? QString() : mimeTypeOf(data);
    }
    return problem;
}

// --- Contacts ---------------------------------------------------------------------------------------------------

QString World::contactProblem(const Person& person, const QByteArray& json) const
{
    const QString holder = m.userIdByHandle.value(person.handle);
    if (!holder.isEmpty() && holder != person.userId)
        return u"the handle \"%1\" is taken"_s.arg(person.handle);
    return tooLong(json);
}

void World::index(const Person& person)
{
    if (!person.handle.isEmpty())
        m.userIdByHandle.insert(person.handle, person.userId);
    if (!person.ppId.isEmpty())
        m.userIdByPpId.insert(person.ppId, person.userId);
}

void World::unindex(const Person& person)
{
    m.userIdByHandle.remove(person.handle);
    if (m.userIdByPpId.value(person.ppId) == person.userId)
        m.userIdByPpId.remove(person.ppId);
}

QString World::addContact(Person& person, bool installed)
{
    Person complete = person;
    if (complete.handle.isEmpty())
        complete.handle = complete.displayName.toLower().remove(u' ');
    if (complete.handle.isEmpty())
        return u"a contact needs a handle or a display name"_s;
    if (complete.userId.isEmpty())
        complete.userId = u"user-"_s + complete.handle;
    if (complete.ppId.isEmpty())
        complete.ppId = u"pp-"_s + complete.handle;
    if (complete.displayName.isEmpty())
        complete.displayName = complete.handle;
    if (m.contacts.count(complete.userId) || complete.userId == m.profile.userId)
        return u"the user id \"%1\" is taken"_s.arg(complete.userId);

    const QByteArray json = wire::text(personToJson(complete));
    const QString problem = contactProblem(complete, json);
    if (!problem.isEmpty())
        return problem;
    person = complete;
    m.contacts.emplace(person.userId, Contact{person, json, installed});
    m.everybody.append(person.userId);
    ++m.added;
    index(person);
    endPending(person.ppId);
    if (m.gone.remove(person.userId))
        Q_EMIT contactChanged(person.userId, personToJson(person));
    if (installed) {
        m.installed.append(person.userId);
        Q_EMIT contactInstalled(person.userId);
    }
    Q_EMIT personChanged(person.userId);
    return {};
}

QString World::changeContact(const Person& person)
{
    const auto found = m.contacts.find(person.userId);
    if (found == m.contacts.end())
        return u"no contact has the user id \"%1\""_s.arg(person.userId);
    const QByteArray json = wire::text(personToJson(person));
    const QString problem = contactProblem(person, json);
    if (!problem.isEmpty())
        return problem;
    Contact& contact = found->second;
    const QJsonObject difference = personDifference(contact.person, person);
    unindex(contact.person);
    contact.person = person;
    contact.json = json;
    index(person);
    if (difference.contains("ppid"_L1))
        endPending(person.ppId);
    if (difference.isEmpty())
        return {};
    const QString userId = person.userId;
    Q_EMIT contactChanged(userId, difference);
    Q_EMIT personChanged(userId);
    return {};
}

QString World::removeContact(const QString& contact)
{
    QString problem;
    const Contact* found = find(contact, &problem);
    if (!found)
        return problem;
    const QString removed = found->person.userId;
    const bool wasInstalled = found->installed;
    unindex(found->person);
    m.contacts.erase(removed);
    m.everybody.removeOne(removed);
    m.gone.insert(removed);
    if (wasInstalled) {
        m.installed.removeOne(removed);
        Q_EMIT contactUninstalled(removed);
    }
    Q_EMIT personChanged(removed);
    return {};
}

QString World::setInstalled(const QString& contact, bool installed)
{
    QString problem;
    Contact* found = find(contact, &problem);
    if (!found)
        return problem;
    if (found->installed == installed)
        return installed ? u"this contact runs the application already"_s
                         : u"this contact does not run the application"_s;
    found->installed = installed;
    const QString userId = found->person.userId;
    if (installed) {
        m.installed.append(userId);
        Q_EMIT contactInstalled(userId);
    } else {
        m.installed.removeOne(userId);
        Q_EMIT contactUninstalled(userId);
    }
    Q_EMIT personChanged(userId);
    return {};
}

QString World::setContactPicture(const QString& contact, const QByteArray& data)
{
    QString problem;
    const Person* found = findContact(contact, &problem);
    if (!found)
        return problem;
    Person person = *found;
    problem = givePicture(person, data);
    return problem.isEmpty() ? changeContact(person) : problem;
}

World::Contact* World::find(const QString& contact, QString* problem)
{
    const auto found = m.contacts.find(m.userIdByHandle.value(contact, contact));
    if (found != m.contacts.end())
        return &found->second;
    *problem = u"no contact has the handle \"%1\""_s.arg(contact);
    return nullptr;
}

const Person* World::findContact(const QString& contact, QString* problem) const
{
    const Contact* found = const_cast<World*>(this)->find(contact, problem);
    return found ? &found->person : nullptr;
}

const World::Contact* World::entry(const QString& userId) const
{
    const auto found = m.contacts.find(userId);
    return found == m.contacts.end() ? nullptr : &found->second;
}

const Person* World::contact(const QString& userId) const
{
    const Contact* found = entry(userId);
    return found ? &found->person : nullptr;
}

QByteArray World::contactJson(const QString& userId) const
{
    const Contact* found = entry(userId);
    return found ? found->json : QByteArray();
}

bool World::isInstalled(const QString& userId) const
{
    const Contact* found = entry(userId);
    return found && found->installed;
}

// --- Profile box ------------------------------------------------------------------------------------------------

const Box& World::box(const QString& application) const
{
    const auto own = m.ownBoxes.constFind(application);
    return own == m.ownBoxes.cend() ? m.commonBox : *own;
}

Box& World::editable(const QString& application)
{
    if (application.isEmpty())
        return m.commonBox;
    const auto own = m.ownBoxes.find(application);
    return own == m.ownBoxes.end() ? *m.ownBoxes.insert(application, m.commonBox) : *own;
}

QString World::boxOwner(const QString& application) const
{
    return m.ownBoxes.contains(application) ? application : QString();
}

QString World::addBoxItem(BoxItem& item, const QString& owner)
{
    const QString problem = editable(owner).addItem(item);
    if (problem.isEmpty())
        Q_EMIT boxItemAdded(item.id, owner);
    return problem;
}

QString World::changeBoxItem(const BoxItem& item, const QString& owner)
{
    bool isAnother = false;
    const QString problem = editable(owner).changeItem(item, &isAnother);
    if (isAnother)
        Q_EMIT boxItemChanged(item.id, owner);
    return problem;
}

QString World::removeBoxItem(QString id, const QString& owner)
{
    const QString problem = editable(owner).removeItem(id);
    if (problem.isEmpty())
        Q_EMIT boxItemRemoved(id, owner);
    return problem;
}

void World::clearBox(const QString& owner)
{
    const QList<BoxItem> items = editable(owner).items();
    for (const BoxItem& item : items)
        removeBoxItem(item.id, owner);
}

QString World::addBoxIcon(const QString& id, const QByteArray& data, const QString& owner)
{
    for (const QString& problem : {box(owner).iconProblem(id), pictureProblem(data)}) {
        if (!problem.isEmpty())
            return problem;
    }
    editable(owner).addIcon({id, keepPicture(data)});
    Q_EMIT boxIconAdded(id, owner);
    return {};
}

QString World::removeBoxIcon(QString id, const QString& owner)
{
    const QString problem = editable(owner).removeIcon(id);
    if (problem.isEmpty())
        Q_EMIT boxIconRemoved(id, owner);
    return problem;
}

void World::setBoxLimit(int items)
{
    m.commonBox.setLimit(items);
    for (Box& own : m.ownBoxes)
        own.setLimit(items);
}

// --- Eco identifiers --------------------------------------------------------------------------------------------

QString World::ecoId(const QString& ppId) const
{
    const bool isKnown = isContact(ppId) || (!ppId.isEmpty() && ppId == m.profile.ppId);
    return m.ecoIds.of(ppId, isKnown);
}

QString World::ecoIdStatus(const QString& ecoId) const
{
    return m.ecoIds.status(ecoId, [this](const QString& ppId) { return isContact(ppId); });
}

void World::setEcoId(const QString& ppId, const QString& ecoId)
{
    m.ecoIds.set(ppId, ecoId);
    if (isContact(ppId))
        endPending(ppId);
}

QString World::setEcoIdStatus(const QString& ecoId, const QString& status)
{
    return m.ecoIds.setStatus(ecoId, status);
}

void World::invite(const QString& ecoId)
{
    m.ecoIds.invite(ecoId, [this](const QString& ppId) { return isContact(ppId); });
}

bool World::isContact(const QString& ppId) const
{
    return m.userIdByPpId.contains(ppId);
}

/// Whoever was invited and is a contact now is waited for no more.
void World::endPending(const QString& ppId)
{
    m.ecoIds.endPending(ecoId(ppId));
}

} // namespace zelcore
