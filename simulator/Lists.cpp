// SPDX-License-Identifier: Apache-2.0
#include <simulator/Lists.h>

#include <simulator/PersonJson.h>
#include <simulator/Wire.h>

#include <QtCore/QJsonObject>

#include <algorithm>

namespace zelcore {

const QString Lists::global = QStringLiteral("global");
const QString Lists::platformContact = QStringLiteral("platformContact");
const QString Lists::platformUser = QStringLiteral("platformUser");
const QString Lists::profileBoxItem = QStringLiteral("profileBoxItem");
const QString Lists::profileBoxImage = QStringLiteral("profileBoxImage");
const QString Lists::permission = QStringLiteral("permission");
const QString Lists::platformProfile = QStringLiteral("platformProfile");

const QStringList& Lists::all()
{
    static const QStringList names{global, platformContact, platformUser, profileBoxItem, profileBoxImage};
    return names;
}

QString Lists::keyMember(const QString& list)
{
    if (list == platformUser || list == platformContact)
        return QStringLiteral("userId");
    if (list == global)
        return QStringLiteral("name");
    if (list == profileBoxItem)
        return QStringLiteral("itemId");
    return list == profileBoxImage ? QStringLiteral("imageId") : QString();
}

QList<QByteArray> Lists::elements(const QString& list, const QString& state) const
{
    QList<QByteArray> elements;
    if (list == global)
        elements = {permissionJson(state), profileJson()};
    else if (list == profileBoxItem)
        std::transform(m_world.boxItems().cbegin(), m_world.boxItems().cend(), std::back_inserter(elements), itemJson);
    else if (list == profileBoxImage)
        std::transform(m_world.boxIcons().cbegin(), m_world.boxIcons().cend(), std::back_inserter(elements), iconJson);
    else if (list == platformUser || list == platformContact)
        std::transform(
            m_world.installed().cbegin(), m_world.installed().cend(), std::back_inserter(elements),
            [&](const QString& id) { return list == platformUser ? m_world.contactJson(id) : keyJson(list, id); });
    return elements;
}

QByteArray Lists::element(const QString& list, const QString& key, const QString& state) const
{
    if (list == platformUser)
        return m_world.contactJson(key);
    if (list == platformContact)
        return m_world.isInstalled(key) ? keyJson(list, key) : QByteArray();
    if (list == global && key == permission)
        return permissionJson(state);
    if (list == global && key == platformProfile)
        return profileJson();
    if (list == profileBoxImage) {
        const BoxIcon* icon = m_world.boxIcon(key);
        return icon ? iconJson(*icon) : QByteArray();
    }
    for (const BoxItem& item : m_world.boxItems()) {
        if (list == profileBoxItem && item.id == key)
            return itemJson(item);
    }
    return {};
}

QByteArray Lists::itemJson(const BoxItem& item)
{
    return wire::text(QJsonObject{{QStringLiteral("itemId"), item.id},
                                  {QStringLiteral("imageId"), item.iconId},
                                  {QStringLiteral("text"), item.text},
                                  {QStringLiteral("cookie"), item.cookie}});
}

QByteArray Lists::iconJson(const BoxIcon& icon)
{
    return wire::text(QJsonObject{{QStringLiteral("imageId"), icon.id}, {QStringLiteral("imageHash"), icon.hash}});
}

QByteArray Lists::keyJson(const QString& list, const QString& key)
{
    return "{\"" + keyMember(list).toLatin1() + "\":" + wire::text(key) + '}';
}

QByteArray Lists::permissionJson(const QString& state) const
{
    const Permissions& allowed = m_world.permissions();
    const QJsonObject value{{QStringLiteral("showAppBox"), allowed.showAppBox},
                            {QStringLiteral("zelInvites"), allowed.zelInvites},
                            {QStringLiteral("registrationState"), state},
                            {QStringLiteral("zelSetup"), allowed.zelSetup}};
    return wire::text(QJsonObject{{QStringLiteral("name"), permission}, {QStringLiteral("value"), value}});
}

QByteArray Lists::profileJson() const
{
    return wire::text(QJsonObject{{QStringLiteral("name"), platformProfile},
                                  {QStringLiteral("value"), personToJson(m_world.profile())}});
}

} // namespace zelcore
