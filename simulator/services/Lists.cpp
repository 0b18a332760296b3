// SPDX-License-Identifier: Apache-2.0
#include <simulator/services/Lists.h>

#include <simulator/world/PersonJson.h>
#include <simulator/wire/Wire.h>

#include <QtCore/QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore {

const QStringList& Lists::all()
{
    static const QStringList names{global, platformContact, platformUser, profileBoxItem, profileBoxImage};
    return names;
}

QString Lists::keyMember(const QString& list)
{
    if (list == platformUser || list == platformContact)
        return u"userId"_s;
    if (list == global)
        return u"name"_s;
    if (list == profileBoxItem)
        return u"itemId"_s;
    return list == profileBoxImage ? u"imageId"_s : QString();
}

QString Lists::boxOwner(const Session& session) const
{
    return m_world.boxOwner(session.uuid.toLower());
}

const Box& Lists::box(const Session& session) const
{
    return m_world.box(session.uuid.toLower());
}

QList<QByteArray> Lists::elements(const QString& list, const Session& session) const
{
    QList<QByteArray> elements;
    if (list == global)
        elements = {permissionJson(session.state), profileJson()};
    else if (list == profileBoxItem)
        std::transform(box(session).items().cbegin(), box(session).items().cend(), std::back_inserter(elements),
                       itemJson);
    else if (list == profileBoxImage)
        std::transform(box(session).icons().cbegin(), box(session).icons().cend(), std::back_inserter(elements),
                       iconJson);
    else if (list == platformUser || list == platformContact)
        std::transform(
            m_world.installed().cbegin(), m_world.installed().cend(), std::back_inserter(elements),
            [&](const QString& id) { return list == platformUser ? m_world.contactJson(id) : keyJson(list, id); });
    return elements;
}

QByteArray Lists::element(const QString& list, const QString& key, const Session& session) const
{
    if (list == platformUser)
        return m_world.contactJson(key);
    if (list == platformContact)
        return m_world.isInstalled(key) ? keyJson(list, key) : QByteArray();
    if (list == global && key == permission)
        return permissionJson(session.state);
    if (list == global && key == platformProfile)
        return profileJson();
    if (list == profileBoxImage) {
        const BoxIcon* icon = box(session).icon(key);
        return icon ? iconJson(*icon) : QByteArray();
    }
    if (list == profileBoxItem) {
        const BoxItem* item = box(session).item(key);
        return item ? itemJson(*item) : QByteArray();
    }
    return {};
}

QByteArray Lists::itemJson(const BoxItem& item)
{
    return wire::text(QJsonObject{
        {u"itemId"_s, item.id}, {u"imageId"_s, item.iconId}, {u"text"_s, item.text}, {u"cookie"_s, item.cookie}});
}

QByteArray Lists::iconJson(const BoxIcon& icon)
{
    return wire::text(QJsonObject{{u"imageId"_s, icon.id}, {u"imageHash"_s, icon.hash}});
}

QByteArray Lists::keyJson(const QString& list, const QString& key)
{
    return "{\"" + keyMember(list).toLatin1() + "\":" + wire::text(key) + '}';
}

QByteArray Lists::permissionJson(const QString& state) const
{
    const Permissions& allowed = m_world.permissions();
    const QJsonObject value{{u"showAppBox"_s, allowed.showAppBox},
                            {u"zelInvites"_s, allowed.zelInvites},
                            {u"registrationState"_s, state},
                            {u"zelSetup"_s, allowed.zelSetup}};
    return wire::text(QJsonObject{{u"name"_s, permission}, {u"value"_s, value}});
}

QByteArray Lists::profileJson() const
{
    return wire::text(QJsonObject{{u"name"_s, platformProfile}, {u"value"_s, personToJson(m_world.profile())}});
}

} // namespace zelcore
