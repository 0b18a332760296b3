// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/RegistrationHandler.h>

#include <QCoreApplication>
#include <QSharedPointer>
#include <QString>

namespace zelsplib {

class GlobalsManagerBase;
class PlatformContactManagerBase;
class ProfileBoxManagerBase;

/// The readiness gates of ZELSPServices: when an application may register, and when it counts as registered.
///
/// "Success" is told only once the own profile, its picture and, where it may be shown, the profile box are there;
/// the contact list is told when both it and the success are, and so that whoever begins to listen to contacts while
/// the success is being told, in whatever order with the list, hears of the whole list after that. No flag ever turns
/// back.
class ZELSPServicesBase : public RegistrationHandler
{
public:
    /// False when the core service's object could not be opened; no manager exists then.
    bool isInitialized() const { return m_initialized; }
    /// Whether what the core service last said of the registration allows to ask for it. False until it has spoken.
    bool canRegister() const;

    void registered() override;
    void userProfileIsReady() override;
    void userProfileAvatarIsReady() override;
    void profileBoxIsReady() override;
    void contactsIsReady() override;

protected:
    ZELSPServicesBase();
    ~ZELSPServicesBase();
    ZELSPServicesBase(const ZELSPServicesBase&) = delete;
    ZELSPServicesBase& operator=(const ZELSPServicesBase&) = delete;

    void setInitialized() { m_initialized = true; }

private:
    virtual GlobalsManagerBase* globalsManager() const = 0;
    virtual ProfileBoxManagerBase* profileBoxManager() const = 0;
    virtual PlatformContactManagerBase* contactManager() const = 0;
    virtual void initMessaging() = 0;

    bool prv_profileBoxIsReady() const;
    // The letters of this name are what they are; its log line spells the word right.
    void prv_pushRegistarationSuccess(const QString& trigger);
    void pushSuccessOnce();
    void pushContactList();

    QSharedPointer<QCoreApplication> m_application; ///< only when the program had none
    bool m_initialized = false;
    bool m_registered = false;
    bool m_userProfileReady = false;
    bool m_userProfileAvatarReady = false;
    bool m_profileBoxReady = false;
    bool m_contactsReady = false;
    bool m_successPushed = false;
    int m_listenersTold = -1; ///< how many there were when the whole list was told; -1: it was not
};

} // namespace zelsplib
