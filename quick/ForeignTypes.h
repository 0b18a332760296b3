// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/Contact.h>
#include <vx/platform/zel/ContactFilterModel.h>
#include <vx/platform/zel/EcoIdStatus.h>
#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/Permission.h>
#include <vx/platform/zel/PermissionValue.h>
#include <vx/platform/zel/ProfileBoxItem.h>
#include <vx/platform/zel/RegistrationState.h>
#include <vx/platform/zel/UserStatus.h>

#include <QtQml/qqmlregistration.h>

// What QML takes as it is. The names here are seen by nobody but what registers types.

struct ContactForeign
{
    Q_GADGET
    QML_FOREIGN(vx::platform::zel::Contact)
    QML_VALUE_TYPE(contact)
};

struct ProfileBoxItemForeign
{
    Q_GADGET
    QML_FOREIGN(vx::platform::zel::ProfileBoxItem)
    QML_VALUE_TYPE(profileBoxItem)
};

struct ContactFilterModelForeign
{
    Q_GADGET
    QML_FOREIGN(vx::platform::zel::ContactFilterModel)
    QML_NAMED_ELEMENT(ContactFilterModel)
};

/// RegistrationState.Allowed
namespace RegistrationStateForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(vx::platform::zel::RegistrationState)
QML_NAMED_ELEMENT(RegistrationState)
} // namespace RegistrationStateForeign

/// UserStatus.Busy
namespace UserStatusForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(vx::platform::zel::UserStatus)
QML_NAMED_ELEMENT(UserStatus)
} // namespace UserStatusForeign

/// ImageType.Png
namespace ImageTypeForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(vx::platform::zel::ImageType)
QML_NAMED_ELEMENT(ImageType)
} // namespace ImageTypeForeign

/// EcoIdStatus.ContactExists
namespace EcoIdStatusForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(vx::platform::zel::EcoIdStatus)
QML_NAMED_ELEMENT(EcoIdStatus)
} // namespace EcoIdStatusForeign

/// Permission.ProfileUpdatesAllowed
namespace PermissionForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(vx::platform::zel::Permission)
QML_NAMED_ELEMENT(Permission)
} // namespace PermissionForeign

/// PermissionValue.Denied
namespace PermissionValueForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(vx::platform::zel::PermissionValue)
QML_NAMED_ELEMENT(PermissionValue)
} // namespace PermissionValueForeign
