// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/ContextObject.h>

#include <vx/platform/zel/ApplicationPermissions.h>

namespace zelquick {

/// What the user allows the application to do. No signal tells of a change: ask when the answer is needed.
class ApplicationPermissions : public zelquick::ContextObject
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit ApplicationPermissions(QObject* parent = nullptr)
        : ContextObject(parent)
    {
    }

    /// Denied until the context is ready.
    Q_INVOKABLE vx::platform::zel::PermissionValue::Type
    permissionValue(vx::platform::zel::Permission::Type permission) const
    {
        return m_permissions ? m_permissions->permissionValue(permission) : zel::PermissionValue::Denied;
    }

protected:
    void start(zel::Context* context, QObject* owner) override
    {
        m_permissions = new zel::ApplicationPermissions(context, owner);
    }
    void forget() override { m_permissions = nullptr; }

private:
    zel::ApplicationPermissions* m_permissions = nullptr;
};

} // namespace zelquick
