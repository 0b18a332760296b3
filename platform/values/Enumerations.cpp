// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/EcoIdStatus.h>
#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/Permission.h>
#include <vx/platform/zel/PermissionValue.h>
#include <vx/platform/zel/RegistrationState.h>
#include <vx/platform/zel/UserStatus.h>

#include <QtCore/QDebug>
#include <QtCore/QMetaEnum>

namespace vx::platform::zel {

namespace {

/// A value that is none of the enumeration goes with the class and its number: it may come from anywhere.
template <typename Type>
QDebug write(QDebug debug, Type value)
{
    const QDebugStateSaver saver(debug);
    const QMetaEnum names = QMetaEnum::fromType<Type>();
    if (const char* const name = names.valueToKey(value))
        return debug.nospace() << name;
    const QByteArray scope(names.scope());
    return debug.nospace() << scope.mid(scope.lastIndexOf(':') + 1).constData() << '(' << static_cast<int>(value)
                           << ')';
}

} // namespace

QDebug operator<<(QDebug debug, EcoIdStatus::Type status)
{
    return write(debug, status);
}

QDebug operator<<(QDebug debug, ImageType::Type type)
{
    return write(debug, type);
}

QDebug operator<<(QDebug debug, Permission::Type permission)
{
    return write(debug, permission);
}

QDebug operator<<(QDebug debug, PermissionValue::Type value)
{
    return write(debug, value);
}

QDebug operator<<(QDebug debug, RegistrationState::Type state)
{
    return write(debug, state);
}

QDebug operator<<(QDebug debug, UserStatus::Type status)
{
    return write(debug, status);
}

} // namespace vx::platform::zel
