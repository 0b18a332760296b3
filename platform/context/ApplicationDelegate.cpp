// SPDX-License-Identifier: Apache-2.0
#include <platform/context/ApplicationDelegate.h>

#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>

namespace vx::platform::zel {

ApplicationDelegate::ApplicationDelegate(Services* services, QObject* parent)
    : QObject(parent)
    , m_services(services)
{
}

/// False, with nothing sent, when the service's last word on registration forbids it.
bool ApplicationDelegate::registerApplication(const QUuid& uuid, bool silent)
{
    if (!m_services->canRegister())
        return false;
    m_requestedUuid = uuid;
    m_services->globals()->sendRegistration(quuidToZELConformantString(uuid), silent);
    return true;
}

void ApplicationDelegate::notifyRegistrationEvent(const QString& code)
{
    qCDebug(lcPlatform) << "ApplicationDelegate::notifyRegistrationEvent" << code;
    const RegistrationState::Type state = HelperUtils::registrationStateFromString(code);
    if (state != RegistrationState::InvalidUuid || registrationAccessState() == state)
        m_toldState = state;
    Q_EMIT registrationEventReceived(state);
}

RegistrationState::Type ApplicationDelegate::registrationAccessState() const
{
    // Without a service there is nothing the application could do about it, which is what BlockedByUser says.
    if (!m_services->isInitialized())
        return RegistrationState::BlockedByUser;
    return HelperUtils::registrationStateFromString(m_services->globals()->getAccessCode());
}

/// All denied without a service.
zelsplib::PlatformPermissions ApplicationDelegate::permissions() const
{
    return m_services->isInitialized() ? m_services->globals()->getPermissions() : zelsplib::PlatformPermissions();
}

} // namespace vx::platform::zel
