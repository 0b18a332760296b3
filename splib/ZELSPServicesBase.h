// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/EventQueue.h>
#include <splib/RegistrationHandler.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <optional>

namespace zelsplib {

class GlobalsManagerBase;
class PlatformContactManagerBase;
class ProfileBoxManagerBase;

/// The readiness gates of ZELSPServices: when an application may register, and when it counts as registered.
///
/// "Success" is told only while it is what the service said last, and only once the own profile, its picture and,
/// where it may be shown, the profile box are there. One that could not be told then is owed, and told by whichever
/// gate or notice finds everything in. The contact list is told when both it and a success are, once; but whoever
/// begins to listen to contacts while the success is being told, in whatever order with the list, hears of the whole
/// list after that. No gate ever closes again.
class ZELSPServicesBase : public RegistrationHandler
{
public:
    /// The core service's object.
    static QString objectPath() { return QStringLiteral("/pps/services/zelcore/platform"); }

    /// False when the core service's object could not be opened; no manager exists then.
    bool isInitialized() const { return m_initialized; }
    /// The number of the error with which opening the object failed; 0 when it did not.
    int initializationError() const { return m_initializationError; }
    /// Whether what the core service last said of the registration allows to ask for it. False until it has spoken.
    bool canRegister() const;
    /// Whether the application is registered and everything is in that its success waits for. It turns with what the
    /// registration event handler is told: true before it hears of a success, false before it hears of anything else.
    bool isReady() const { return m_successPushed && !m_successOwed && isSuccessSaid(); }

    void registered() override;
    void userProfileIsReady() override;
    void userProfileAvatarIsReady() override;
    void profileBoxIsReady() override;
    void contactsIsReady() override;

protected:
    ZELSPServicesBase();
    ~ZELSPServicesBase() = default;
    ZELSPServicesBase(const ZELSPServicesBase&) = delete;
    ZELSPServicesBase& operator=(const ZELSPServicesBase&) = delete;

    void setInitialized() { m_initialized = true; }
    void setInitializationError(int error);

private:
    virtual GlobalsManagerBase* globalsManager() const = 0;
    virtual ProfileBoxManagerBase* profileBoxManager() const = 0;
    virtual PlatformContactManagerBase* contactManager() const = 0;
    virtual void initMessaging() = 0;

    bool prv_profileBoxIsReady() const;
    // The letters of this name are what they are; its log line spells the word right.
    void prv_pushRegistarationSuccess(const QString& trigger);
    bool mayTellSuccess() const;
    /// Whether success is what the service said last.
    bool isSuccessSaid() const;
    void pushSuccess();
    void pushContactList();

    QSharedPointer<QCoreApplication> m_application; ///< only when the program had none
    bool m_initialized = false;
    int m_initializationError = 0;
    bool m_registered = false;
    bool m_userProfileReady = false;
    bool m_userProfileAvatarReady = false;
    bool m_profileBoxReady = false;
    bool m_contactsReady = false;
    bool m_successPushed = false;
    bool m_successOwed = false;
    std::optional<int> m_listenersTold; ///< how many there were when the whole contact list was told last
    EventQueue m_events;
};

} // namespace zelsplib
