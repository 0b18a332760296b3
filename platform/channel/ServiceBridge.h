// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/Services.h>
#include <vx/platform/zel/RegistrationState.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>

namespace vx::platform::zel {

class ApplicationDelegate;
class ContactServiceDelegate;
class MessageServiceDelegate;
class PPSMonitor;
class ProfileBoxDelegate;
class UserProfileDelegate;
class UtilsDelegate;

/// Ties the public classes to the services core: one per process, made by the first call of instance() and never
/// destroyed. It owns the delegates of the public classes and the monitor of the platform object, and is the way of
/// every incoming message.
///
/// Whether the object could be opened is settled by then, for good: if not, isInitialized() is false, registrar() is
/// there and every other accessor answers null.
///
/// Thread: instance() may be called from any thread. Whatever it makes lives on the thread that called it first and
/// needs that thread's event loop. What runs on that thread while the bridge is being made, a message handler of the
/// application, gets the bridge as far as it is made by then: the registrar is there.
class ServiceBridge : public QObject
{
    Q_OBJECT

public:
    static ServiceBridge* instance();

    explicit ServiceBridge(QObject* parent);
    ~ServiceBridge() override;

    bool isInitialized() const { return m_initialized; }
    ApplicationDelegate* registrar() const { return m_registrar; }
    UserProfileDelegate* userProfile() const { return m_userProfile; }
    ContactServiceDelegate* contactService() const { return m_contactService; }
    MessageServiceDelegate* messageService() const { return m_messageService; }
    UtilsDelegate* utils() const { return m_utils; }
    ProfileBoxDelegate* profileBox() const { return m_profileBox; }

private Q_SLOTS:
    void dispatchPpsMessage(QByteArray ppsMessage);
    void registrationAccessStatusUpdated(vx::platform::zel::RegistrationState::Type state);

private:
    void warnThatThereIsNoService() const;
    void createDelegates();
    void introduceToEventHandlers();
    void startMonitor();

    bool m_initialized = false;
    Services* m_services = nullptr;
    PPSMonitor* m_monitor = nullptr;
    ApplicationDelegate* m_registrar = nullptr;
    UserProfileDelegate* m_userProfile = nullptr;
    ContactServiceDelegate* m_contactService = nullptr;
    MessageServiceDelegate* m_messageService = nullptr;
    UtilsDelegate* m_utils = nullptr;
    ProfileBoxDelegate* m_profileBox = nullptr;
};

} // namespace vx::platform::zel
