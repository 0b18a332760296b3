// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/Permission.h>
#include <vx/platform/zel/PermissionValue.h>
#include <iface/Export.h>

#include <QtCore/QObject>

#include <memory>

namespace vx::platform::zel {

class ApplicationPermissionsPrivate;
class Context;

/// What the user allows the application to do.
///
/// Make it when the context is ready, as whenReady() tells: one that is made while the context gives no access answers
/// Denied for its life. The context is held guarded and may go first.
///
/// Thread: that of the context. There are no signals; ask when the answer is needed, it is always the current one.
class ZEL_EXPORT ApplicationPermissions : public QObject
{
    Q_OBJECT

public:
    /// The permissions of the application that \a context registers; \a parent may own them.
    explicit ApplicationPermissions(Context* context, QObject* parent = nullptr);
    ~ApplicationPermissions() override;

    PermissionValue::Type permissionValue(Permission::Type permission) const;

private:
    std::unique_ptr<ApplicationPermissionsPrivate> const d;
};

} // namespace vx::platform::zel
