// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ApplicationPermissions.h>

#include <platform/channel/Trace.h>
#include <platform/context/ApplicationDelegate.h>
#include <platform/context/PrivatePart.h>

namespace vx::platform::zel {

class ApplicationPermissionsPrivate : public PrivatePart<ApplicationPermissions, ApplicationDelegate>
{
    Q_OBJECT

public:
    ApplicationPermissionsPrivate(Context* givenContext, ApplicationPermissions* permissions)
        : PrivatePart(permissions, "ApplicationPermissions", givenContext, mistakes::Needs::Access,
                      &ServiceBridge::registrar)
    {
        if (context)
            qCDebug(lcPlatform) << "entering ApplicationPermissionsPrivate::ApplicationPermissionsPrivate";
    }

    bool allows(Permission::Type permission) const
    {
        if (!isAllowed())
            return false;
        switch (permission) {
        case Permission::ProfileUpdatesAllowed:
            return delegate->isProfileBoxAllowed(); // there is no permission for the profile but that for its box
        case Permission::ContactInvitationsAllowed:
            return delegate->zelInvitationsAllowed();
        }
        return false;
    }
};

ApplicationPermissions::ApplicationPermissions(Context* context, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<ApplicationPermissionsPrivate>(context, this))
{
}

ApplicationPermissions::~ApplicationPermissions() = default;

/// Whether the user allows \a permission. Denied also without access and for a value that is no permission.
PermissionValue::Type ApplicationPermissions::permissionValue(Permission::Type permission) const
{
    return d->allows(permission) ? PermissionValue::Allowed : PermissionValue::Denied;
}

} // namespace vx::platform::zel

#include "ApplicationPermissions.moc"
