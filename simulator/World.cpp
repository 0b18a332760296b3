// SPDX-License-Identifier: Apache-2.0
#include <simulator/World.h>

#include <simulator/PersonJson.h>
#include <simulator/Wire.h>

#include <QtCore/QCryptographicHash>

#include <algorithm>

namespace zelcore {

namespace {

// What applications may put into one item of the box.
constexpr qsizetype longestItemText = 100;
constexpr qsizetype mostItemLineBreaks = 2;
constexpr qsizetype longestItemCookie = 128;

const QString ecoIdPrefix = QStringLiteral("eco-");

template <typename Record>
auto findById(const QList<Record>& records, const QString& id)
{
    return std::find_if(records.cbegin(), records.cend(), [&](const Record& record) { return record.id == id; });
}

QString tooLong(const QByteArray& json)
{
    return json.size() <= wire::largestElement
               ? QString()
               : QStringLiteral("the record would take %1 bytes, a message has room for %2")
                     .arg(json.size())
                     .arg(wire::largestElement);
}

/// What the own user looks like until somebody says otherwise; the picture is a real one, a single pixel.
Person defaultProfile(World& world)
{
    Person person;
    person.userId = QStringLiteral("user-robin");
    person.handle = QStringLiteral("robin");
    person.ppId = QStringLiteral("pp-robin");
    person.appVersion = QStringLiteral("1.0");
    person.displayName = QStringLiteral("Robin Vale");
    person.personalMessage = QStringLiteral("Out and about");
    person.statusMessage = QStringLiteral("Available");
    person.timeZone = QStringLiteral("Europe/Berlin");
    person.countryCode = QStringLiteral("DE");
    person.clientVersion = 700;
    person.avatarId = world.keepPicture(
        QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJ"
                               "RU5ErkJggg=="));
    person.avatarMimeType = QStringLiteral("image/png");
    return person;
}

} // namespace

World::World(QObject* parent)
    : QObject(parent)
{
    m_profile = defaultProfile(*this);
}

void World::setPermissions(const Permissions& permissions)
{
    if (permissions == m_permissions)
        return;
    m_permissions = permissions;
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
    const QJsonObject difference = personDifference(m_profile, profile);
    m_profile = profile;
    if (!difference.isEmpty())
        Q_EMIT profileChanged(difference);
    return {};
}

QString World::hashOf(const QByteArray& data)
{
    return QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex());
}

QString World::mimeTypeOf(const QByteArray& data)
{
    if (data.startsWith("\x89PNG"))
        return QStringLiteral("image/png");
    if (data.startsWith("GIF8"))
        return QStringLiteral("image/gif");
    if (data.startsWith("BM"))
        return QStringLiteral("image/bmp");
    return QStringLiteral("image/jpeg");
}

QString World::pictureProblem(const QByteArray& data)
{
    return !data.isEmpty() && data.size() <= largestPicture
               ? QString()
               : QStringLiteral("a picture has 1 to %1 bytes, not %2").arg(largestPicture).arg(data.size());
}

QString World::keepPicture(const QByteArray& data)
{
    const QString hash = hashOf(data);
    m_pictures.insert(hash, data);
    return hash;
}

// --- Contacts ---------------------------------------------------------------------------------------------------

QString World::contactProblem(const Person& person, const QByteArray& json) const
{
    const QString holder = m_userIdByHandle.value(person.handle);
    if (!person.handle.isEmpty() && !holder.isEmpty() && holder != person.userId)
        return QStringLiteral("the handle \"%1\" is taken").arg(person.handle);
    return tooLong(json);
}

void World::index(const Person& person)
{
    if (!person.handle.isEmpty())
        m_userIdByHandle.insert(person.handle, person.userId);
    if (!person.ppId.isEmpty())
        m_userIdByPpId.insert(person.ppId, person.userId);
}

void World::unindex(const Person& person)
{
    m_userIdByHandle.remove(person.handle);
    if (m_userIdByPpId.value(person.ppId) == person.userId)
        m_userIdByPpId.remove(person.ppId);
}

QString World::addContact(Person& person, bool installed)
{
    Person complete = person;
    if (complete.handle.isEmpty())
        complete.handle = complete.displayName.toLower().remove(QLatin1Char(' '));
    if (complete.handle.isEmpty())
        return QStringLiteral("a contact needs a handle or a display name");
    if (complete.userId.isEmpty())
        complete.userId = QStringLiteral("user-") + complete.handle;
    if (complete.ppId.isEmpty())
        complete.ppId = QStringLiteral("pp-") + complete.handle;
    if (complete.displayName.isEmpty())
        complete.displayName = complete.handle;
    if (m_contacts.count(complete.userId) || complete.userId == m_profile.userId)
        return QStringLiteral("the user id \"%1\" is taken").arg(complete.userId);

    const QByteArray json = wire::text(personToJson(complete));
    const QString problem = contactProblem(complete, json);
    if (!problem.isEmpty())
        return problem;
    person = complete;
    m_contacts.emplace(person.userId, Contact{person, json, installed});
    m_everybody.append(person.userId);
    ++m_added;
    index(person);
    if (m_gone.remove(person.userId))
        Q_EMIT contactChanged(person.userId, personToJson(person));
    if (installed) {
        m_installed.append(person.userId);
        Q_EMIT contactInstalled(person.userId);
    }
    return {};
}

QString World::changeContact(const Person& person)
{
    const auto found = m_contacts.find(person.userId);
    if (found == m_contacts.end())
        return QStringLiteral("no contact has the user id \"%1\"").arg(person.userId);
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
    if (!difference.isEmpty())
        Q_EMIT contactChanged(QString(person.userId), difference);
    return {};
}

QString World::removeContact(const QString& userId)
{
    const auto found = m_contacts.find(userId);
    if (found == m_contacts.end())
        return QStringLiteral("no contact has the user id \"%1\"").arg(userId);
    const QString removed = found->first;
    const bool wasInstalled = found->second.installed;
    unindex(found->second.person);
    m_contacts.erase(found);
    m_everybody.removeOne(removed);
    m_gone.insert(removed);
    if (wasInstalled) {
        m_installed.removeOne(removed);
        Q_EMIT contactUninstalled(removed);
    }
    return {};
}

QString World::setInstalled(const QString& userId, bool installed)
{
    const auto found = m_contacts.find(userId);
    if (found == m_contacts.end())
        return QStringLiteral("no contact has the user id \"%1\"").arg(userId);
    if (found->second.installed == installed)
        return installed ? QStringLiteral("this contact runs the application already")
                         : QStringLiteral("this contact does not run the application");
    found->second.installed = installed;
    const QString id = found->first;
    if (installed) {
        m_installed.append(id);
        Q_EMIT contactInstalled(id);
    } else {
        m_installed.removeOne(id);
        Q_EMIT contactUninstalled(id);
    }
    return {};
}

const Person* World::contact(const QString& userId) const
{
    const auto found = m_contacts.find(userId);
    return found == m_contacts.end() ? nullptr : &found->second.person;
}

const Person* World::contactByHandle(const QString& handle) const
{
    return contact(m_userIdByHandle.value(handle));
}

QByteArray World::contactJson(const QString& userId) const
{
    const auto found = m_contacts.find(userId);
    return found == m_contacts.end() ? QByteArray() : found->second.json;
}

bool World::isInstalled(const QString& userId) const
{
    const auto found = m_contacts.find(userId);
    return found != m_contacts.end() && found->second.installed;
}

// --- Profile box ------------------------------------------------------------------------------------------------

QString World::boxItemProblem(const BoxItem& item) const
{
    if (item.text.isEmpty())
        return QStringLiteral("an item needs a text");
    if (item.text.size() > longestItemText)
        return QStringLiteral("an item's text has at most %1 characters, not %2")
            .arg(longestItemText)
            .arg(item.text.size());
    if (item.text.count(QLatin1Char('\n')) + item.text.count(QLatin1Char('\r')) > mostItemLineBreaks)
        return QStringLiteral("an item's text has at most %1 line breaks").arg(mostItemLineBreaks);
    if (item.cookie.size() > longestItemCookie)
        return QStringLiteral("an item's cookie has at most %1 characters, not %2")
            .arg(longestItemCookie)
            .arg(item.cookie.size());
    if (!item.iconId.isEmpty() && !boxIcon(item.iconId))
        return QStringLiteral("no icon has the id \"%1\"").arg(item.iconId);
    return {};
}

QString World::addBoxItem(BoxItem& item)
{
    const QString problem = boxItemProblem(item);
    if (!problem.isEmpty())
        return problem;
    item.id = QStringLiteral("item-%1").arg(m_nextItem++);
    m_items.append(item);
    Q_EMIT boxItemAdded(item);
    return {};
}

QString World::changeBoxItem(const BoxItem& item)
{
    const auto found = findById(m_items, item.id);
    if (found == m_items.cend())
        return QStringLiteral("no item has the id \"%1\"").arg(item.id);
    const QString problem = boxItemProblem(item);
    if (!problem.isEmpty() || *found == item)
        return problem;
    m_items[found - m_items.cbegin()] = item;
    Q_EMIT boxItemChanged(item);
    return {};
}

QString World::removeBoxItem(const QString& id)
{
    const auto found = findById(m_items, id);
    if (found == m_items.cend())
        return QStringLiteral("no item has the id \"%1\"").arg(id);
    const QString removed = found->id;
    m_items.erase(found);
    Q_EMIT boxItemRemoved(removed);
    return {};
}

QString World::boxIconProblem(const QString& id) const
{
    bool isNumber = false;
    const int number = id.toInt(&isNumber);
    if (!isNumber || number < 0 || QString::number(number) != id)
        return QStringLiteral("\"%1\" is no icon id").arg(id);
    return boxIcon(id) ? QStringLiteral("the icon %1 is registered already").arg(id) : QString();
}

QString World::addBoxIcon(const QString& id, const QByteArray& data)
{
    for (const QString& problem : {boxIconProblem(id), pictureProblem(data)}) {
        if (!problem.isEmpty())
            return problem;
    }
    const BoxIcon icon{id, keepPicture(data)};
    m_icons.append(icon);
    Q_EMIT boxIconAdded(icon);
    return {};
}

QString World::removeBoxIcon(const QString& id)
{
    const auto found = findById(m_icons, id);
    if (found == m_icons.cend())
        return QStringLiteral("no icon has the id \"%1\"").arg(id);
    const QString removed = found->id;
    m_icons.erase(found);
    Q_EMIT boxIconRemoved(removed);
    return {};
}

const BoxIcon* World::boxIcon(const QString& id) const
{
    const auto found = findById(m_icons, id);
    return found == m_icons.cend() ? nullptr : &*found;
}

// --- Eco identifiers --------------------------------------------------------------------------------------------

QString World::ecoId(const QString& ppId) const
{
    const auto given = m_ecoIds.constFind(ppId);
    if (given != m_ecoIds.cend())
        return *given;
    const bool known = m_userIdByPpId.contains(ppId) || (!ppId.isEmpty() && ppId == m_profile.ppId);
    return known ? ecoIdPrefix + ppId : QString();
}

QString World::ecoIdStatus(const QString& ecoId) const
{
    const auto given = m_ecoIdStates.constFind(ecoId);
    if (given != m_ecoIdStates.cend())
        return *given;
    const bool isContact = ecoId.startsWith(ecoIdPrefix) && m_userIdByPpId.contains(ecoId.mid(ecoIdPrefix.size()));
    const bool isGivenContact = m_userIdByPpId.contains(m_ecoIds.key(ecoId));
    return isContact || isGivenContact ? QStringLiteral("ContactExists") : QStringLiteral("Unknown");
}

void World::setEcoId(const QString& ppId, const QString& ecoId)
{
    m_ecoIds.insert(ppId, ecoId);
}

void World::setEcoIdStatus(const QString& ecoId, const QString& status)
{
    m_ecoIdStates.insert(ecoId, status);
}

} // namespace zelcore
