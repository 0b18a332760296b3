// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <device/Object.h>
#include <platform/channel/Services.h>
#include <vx/platform/zel/RegistrationState.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>

#include <memory>
#include <string>

namespace vx::platform::zel {

class ApplicationDelegate;
class ContactServiceDelegate;
class MessageServiceDelegate;
class PPSMonitor;
class ProfileBoxDelegate;
class UserProfileDelegate;
class UtilsDelegate;

/// Ties the public classes to the services core: one per process, made by the first call of instance(). It owns the
/// delegates of the public classes and the monitor of the platform object, and is the way of every incoming message.
///
/// It stays for as long as the process has a Context. Without one it goes with the application object, or when
/// letGo() asks for it, and the next call of instance() begins as in a new process.
///
/// Whether the object could be opened is settled when it is made: if not, isInitialized() is false, registrar() is
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
    /// Forgets the service and everything that it said. False, with nothing done, while hold() is in force, while a
    /// message is being handed out and on any thread but the bridge's. True as well when there is nothing to forget.
    static bool letGo();
    /// The folder in which the process's bridge found objects when it was made; null when there is no bridge.
    static const char* root();

    explicit ServiceBridge(QObject* parent);

    /// Keeps the bridge for as long as somebody has it.
    std::shared_ptr<const void> hold() const { return m_hold; }

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
    void introduceToEventHandlers();

    const std::string m_root = device::resolveObjectPath("/pps");
    const std::shared_ptr<const void> m_hold = std::make_shared<char>();
    int m_dispatching = 0; ///< messages that are being handed out, one within the other
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
