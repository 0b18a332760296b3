// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>
#include <vx/platform/zel/Utils.h>

#include <QtCore/QDebug>
#include <QtCore/QString>

/// Everything that a public object answers, requests included, as one text; and what that is without access.
namespace answers {

using namespace vx::platform::zel;

template <typename... Answers>
QString text(const Answers&... answers)
{
    QString all;
    QDebug stream(&all);
    (stream << ... << answers);
    return all.simplified();
}

inline QString of(ApplicationPermissions& permissions)
{
    return text(permissions.permissionValue(Permission::ProfileUpdatesAllowed),
                permissions.permissionValue(Permission::ContactInvitationsAllowed));
}
inline QString of(ContactService& service)
{
    return text(service.isValid(), service.contactCount(), service.contacts().size(),
                service.contact(QStringLiteral("ada")).handle(),
                service.containsContact(service.contact(QStringLiteral("ada"))),
                service.requestDisplayPicture(QStringLiteral("ada")));
}
inline QString of(ProfileBox& box)
{
    return text(box.itemCount(), box.items().size(), box.item(QStringLiteral("1")).id(),
                box.requestAddItem(QStringLiteral("text"), QString()),
                box.requestAddItem(QStringLiteral("text"), 1, QString()), box.requestRemoveItem(QStringLiteral("1")),
                box.requestRemoveAllItems(), box.requestRegisterIcon(1, ImageType::Png, "x"),
                box.requestRetrieveIcon(1));
}
inline QString of(UserProfile& profile)
{
    return text(profile.displayName(), profile.personalMessage(), profile.status(), profile.statusMessage(),
                profile.ppId(), profile.handle(), profile.displayPictureMimeType(), profile.displayPicture(),
                profile.applicationVersion(), profile.zelVersion(), profile.sdkVersion(),
                profile.requestUpdatePersonalMessage(QStringLiteral("x")),
                profile.requestUpdateStatus(UserStatus::Busy, QStringLiteral("x")),
                profile.requestUpdateDisplayPicture(ImageType::Png, "x"));
}
inline QString of(Utils& utils)
{
    return text(utils.requestEcoId(QStringLiteral("p")), utils.requestEcoIdStatus(QStringLiteral("e")),
                utils.sendContactInvitation(QStringLiteral("e"), QStringLiteral("n"), QStringLiteral("m")),
                utils.invokeChat(QStringLiteral("e")));
}

template <class Public>
QString withoutAccess();
template <>
inline QString withoutAccess<ApplicationPermissions>()
{
    return text(PermissionValue::Denied, PermissionValue::Denied);
}
template <>
inline QString withoutAccess<ContactService>()
{
    return text(false, 0, 0, QString(), false, false);
}
template <>
inline QString withoutAccess<ProfileBox>()
{
    return text(0, 0, QString(), false, false, false, false, false, false);
}
template <>
inline QString withoutAccess<UserProfile>()
{
    return text(QString(), QString(), UserStatus::Available, QString(), QString(), QString(), ImageType::Unsupported,
                QByteArray(), QString(), 0, 200, false, false, false);
}
template <>
inline QString withoutAccess<Utils>()
{
    return text(false, false, false, false);
}

} // namespace answers
