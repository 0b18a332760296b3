// SPDX-License-Identifier: Apache-2.0
#include <simulator/world/World.h>

#include <simulator/world/PersonJson.h>
#include <simulator/wire/Wire.h>

#include <QtCore/QCryptographicHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

// What applications may put into one item of the box.
constexpr qsizetype longestItemText = 100;
constexpr qsizetype mostItemLineBreaks = 2;
constexpr qsizetype longestItemCookie = 128;

const QString ecoIdPrefix = u"eco-"_s;
const QString unknown = u"Unknown"_s;
const QString contactExists = u"ContactExists"_s;
const QString pending = u"PendingContactExists"_s;

/// Null when there is none.
template <typename Record>
const Record* findById(const QList<Record>& records, const QString& id)
{
    const auto found =
        std::find_if(records.cbegin(), records.cend(), [&](const Record& record) { return record.id == id; });
    return found == records.cend() ? nullptr : &*found;
}

template <typename Record>
bool removeById(QList<Record>& records, const QString& id)
{
    return records.removeIf([&](const Record& record) { return record.id == id; }) > 0;
}

QString noItem(const QString& id)
{
    return u"no item has the id \"%1\""_s.arg(id);
}

QString noIcon(const QString& id)
{
    return u"no icon has the id \"%1\""_s.arg(id);
}

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
    if (!person.handle.isEmpty() && !holder.isEmpty() && holder != person.userId)
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

QString World::boxItemProblem(const BoxItem& item, bool iconIsComing) const
{
    if (item.text.isEmpty())
        return u"an item needs a text"_s;
    if (item.text.size() > longestItemText)
        return u"an item's text has at most %1 characters, not %2"_s.arg(longestItemText).arg(item.text.size());
    if (item.text.count(u'\n') + item.text.count(u'\r') > mostItemLineBreaks)
        return u"an item's text has at most %1 line breaks"_s.arg(mostItemLineBreaks);
    if (item.cookie.size() > longestItemCookie)
        return u"an item's cookie has at most %1 characters, not %2"_s.arg(longestItemCookie).arg(item.cookie.size());
    if (!item.iconId.isEmpty() && !iconIsComing && !boxIcon(item.iconId))
        return noIcon(item.iconId);
    return {};
}

QString World::addBoxItem(BoxItem& item)
{
    const QString problem = boxItemProblem(item);
    if (!problem.isEmpty())
        return problem;
    item.id = u"item-%1"_s.arg(m.nextItem++);
    m.items.append(item);
    Q_EMIT boxItemAdded(item.id);
    return {};
}

QString World::changeBoxItem(const BoxItem& item)
{
    const BoxItem* before = boxItem(item.id);
    const QString problem = before ? boxItemProblem(item) : noItem(item.id);
    if (!problem.isEmpty() || *before == item)
        return problem;
    m.items[before - m.items.constData()] = item;
    Q_EMIT boxItemChanged(item.id);
    return {};
}

QString World::removeBoxItem(QString id)
{
    if (!removeById(m.items, id))
        return noItem(id);
    Q_EMIT boxItemRemoved(id);
    return {};
}

void World::clearBox()
{
    const QList<BoxItem> items = m.items;
    for (const BoxItem& item : items)
        removeBoxItem(item.id);
}

QString World::boxIconProblem(const QString& id) const
{
    bool isNumber = false;
    const int number = id.toInt(&isNumber);
    if (!isNumber || number < 0 || QString::number(number) != id)
        return u"\"%1\" is no icon id"_s.arg(id);
    return boxIcon(id) ? u"the icon %1 is registered already"_s.arg(id) : QString();
}

QString World::addBoxIcon(const QString& id, const QByteArray& data)
{
    for (const QString& problem : {boxIconProblem(id), pictureProblem(data)}) {
        if (!problem.isEmpty())
            return problem;
    }
    const BoxIcon icon{id, keepPicture(data)};
    m.icons.append(icon);
    Q_EMIT boxIconAdded(icon.id);
    return {};
}

QString World::removeBoxIcon(QString id)
{
    if (!removeById(m.icons, id))
        return noIcon(id);
    Q_EMIT boxIconRemoved(id);
    return {};
}

const BoxItem* World::boxItem(const QString& id) const
{
    return findById(m.items, id);
}

const BoxIcon* World::boxIcon(const QString& id) const
{
    return findById(m.icons, id);
}

// --- Eco identifiers --------------------------------------------------------------------------------------------

QString World::ecoId(const QString& ppId) const
{
    const auto given = m.ecoIds.constFind(ppId);
    if (given != m.ecoIds.cend())
        return *given;
    const bool known = m.userIdByPpId.contains(ppId) || (!ppId.isEmpty() && ppId == m.profile.ppId);
    return known ? ecoIdPrefix + ppId : QString();
}

QString World::ecoIdStatus(const QString& ecoId) const
{
    const auto given = m.ecoIdStates.constFind(ecoId);
    if (given != m.ecoIdStates.cend())
        return *given;
    const QStringList ppIds = m.ecoIds.keys(ecoId)
                              << (ecoId.startsWith(ecoIdPrefix) ? ecoId.mid(ecoIdPrefix.size()) : QString());
    const bool isContact = std::any_of(ppIds.cbegin(), ppIds.cend(),
                                       [this](const QString& ppId) { return m.userIdByPpId.contains(ppId); });
    return isContact ? contactExists : unknown;
}

void World::setEcoId(const QString& ppId, const QString& ecoId)
{
    m.ecoIds.insert(ppId, ecoId);
    if (m.userIdByPpId.contains(ppId))
        endPending(ppId);
}

QString World::setEcoIdStatus(const QString& ecoId, const QString& status)
{
    const QStringList states{unknown, contactExists, pending};
    if (!states.contains(status))
        return u"\"%1\" is none of %2"_s.arg(status, states.join(", "_L1));
    m.ecoIdStates.insert(ecoId, status);
    return {};
}

void World::invite(const QString& ecoId)
{
    if (ecoIdStatus(ecoId) == unknown)
        m.ecoIdStates.insert(ecoId, pending);
}

/// Whoever was invited and is a contact now is waited for no more.
void World::endPending(const QString& ppId)
{
    const QString id = ecoId(ppId);
    if (m.ecoIdStates.value(id) == pending)
        m.ecoIdStates.remove(id);
}

} // namespace zelcore
