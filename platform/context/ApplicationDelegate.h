// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/Services.h>
#include <vx/platform/zel/RegistrationState.h>

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QUuid>

namespace vx::platform::zel {

/// Registration and permissions for all contexts of the process. Made and owned by the bridge, whether or not the
/// library could be initialised; lives on the bridge's thread.
class ApplicationDelegate : public QObject
{
    Q_OBJECT

public:
    ApplicationDelegate(Services* services, QObject* parent);

    /// The form that the service takes: lower-case groups of 8-4-4-4-12, 36 characters, no braces.
    static QString quuidToZELConformantString(const QUuid& uuid) { return uuid.toString(QUuid::WithoutBraces); }

    bool registerApplication(const QUuid& uuid, bool silent);
    /// As which application the process was to be registered last; null before it was.
    QUuid requestedUuid() const { return m_requestedUuid; }
    void notifyRegistrationEvent(const QString& code);
    /// The last state that was told, but for an InvalidUuid that the service has not said.
    RegistrationState::Type toldState() const { return m_toldState; }
    RegistrationState::Type registrationAccessState() const;
    bool isReady() const { return m_services->isReady(); }
    bool isZelSetup() const { return permissions().zelSetup; }
    bool zelInvitationsAllowed() const { return permissions().zelInvites; }
    bool isProfileBoxAllowed() const { return permissions().showAppBox; }

Q_SIGNALS:
    void registrationEventReceived(vx::platform::zel::RegistrationState::Type state);

private:
    zelsplib::PlatformPermissions permissions() const;

    Services* const m_services;
    RegistrationState::Type m_toldState = RegistrationState::Unknown;
    QUuid m_requestedUuid;
};

} // namespace vx::platform::zel
