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

// Enumerations: types that nobody makes, for their values. Classes of their own, for QML's tools do not look into
// foreign ones for values.

/// RegistrationState.Allowed
class RegistrationStateValues : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(RegistrationState)
    QML_UNCREATABLE("RegistrationState is there for its values")
    QML_EXTENDED_NAMESPACE(vx::platform::zel::RegistrationState)
};

/// UserStatus.Busy
class UserStatusValues : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(UserStatus)
    QML_UNCREATABLE("UserStatus is there for its values")
    QML_EXTENDED_NAMESPACE(vx::platform::zel::UserStatus)
};

/// ImageType.Png
class ImageTypeValues : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(ImageType)
    QML_UNCREATABLE("ImageType is there for its values")
    QML_EXTENDED_NAMESPACE(vx::platform::zel::ImageType)
};

/// EcoIdStatus.ContactExists
class EcoIdStatusValues : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(EcoIdStatus)
    QML_UNCREATABLE("EcoIdStatus is there for its values")
    QML_EXTENDED_NAMESPACE(vx::platform::zel::EcoIdStatus)
};

/// Permission.ProfileUpdatesAllowed
class PermissionValues : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Permission)
    QML_UNCREATABLE("Permission is there for its values")
    QML_EXTENDED_NAMESPACE(vx::platform::zel::Permission)
};

/// PermissionValue.Denied
class PermissionValueValues : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(PermissionValue)
    QML_UNCREATABLE("PermissionValue is there for its values")
    QML_EXTENDED_NAMESPACE(vx::platform::zel::PermissionValue)
};
