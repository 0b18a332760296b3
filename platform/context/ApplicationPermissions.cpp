// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ApplicationPermissions.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/context/ApplicationDelegate.h>
#include <platform/mistakes/Mistakes.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QPointer>

namespace vx::platform::zel {

class ApplicationPermissionsPrivate : public QObject
{
    Q_OBJECT

public:
    ApplicationPermissionsPrivate(Context* givenContext, ApplicationPermissions* permissions)
        : QObject(permissions)
        , context(givenContext)
    {
        mistakes::checkMaking("ApplicationPermissions", context, mistakes::Needs::Access);
        if (!context)
            return;
        // Taken once and never again: permissions that were made too early answer Denied for their life.
        if (context->isAccessAllowed())
            registrar = ServiceBridge::instance()->registrar();
        qCDebug(lcPlatform) << "entering ApplicationPermissionsPrivate::ApplicationPermissionsPrivate";
    }

    bool allows(Permission::Type permission) const
    {
        if (!mistakes::hasAccess("ApplicationPermissions", context) || !registrar)
            return false;
        switch (permission) {
        case Permission::ProfileUpdatesAllowed:
            return registrar->isProfileBoxAllowed(); // there is no permission for the profile but that for its box
        case Permission::ContactInvitationsAllowed:
            return registrar->zelInvitationsAllowed();
        }
        return false;
    }

    ApplicationDelegate* registrar = nullptr;
    QPointer<Context> const context;
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
