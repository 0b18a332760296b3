// SPDX-License-Identifier: Apache-2.0
#include <splib/ZELSPServicesBase.h>

#include <splib/contacts/PlatformContactManagerBase.h>
#include <splib/globals/GlobalNames.h>
#include <splib/globals/GlobalsManagerBase.h>
#include <splib/log/Logging.h>
#include <splib/profilebox/ProfileBoxManagerBase.h>

#include <QtCore/QStringList>

using namespace Qt::StringLiterals;

namespace zelsplib {

namespace {

// The application object keeps references to both.
int noArgumentCount = 0;
char* noArguments[] = {nullptr};

} // namespace

ZELSPServicesBase::ZELSPServicesBase()
{
    if (!QCoreApplication::instance())
        m_application = QSharedPointer<QCoreApplication>::create(noArgumentCount, noArguments);
}

void ZELSPServicesBase::setInitializationError(int error)
{
    m_initializationError = error;
    logging::Log<logging::ZELSP_SVC_INIT_FAILURE>({}, error);
}

bool ZELSPServicesBase::canRegister() const
{
    using namespace logging;
    const GlobalsManagerBase* globals = globalsManager();
    if (!globals) {
        Log<GENERAL_ERROR>({}, "ZELSPServices::canRegister(), Cannot register since GlobalsManager is null");
        return false;
    }
    const QStringList statesThatAllow{u"Unregistered"_s, u"NoDataConnection"_s, u"UnexpectedError"_s,
                                      u"InvalidUuid"_s,  u"TemporaryError"_s,   u"CancelledByUser"_s};
    const bool allowed = statesThatAllow.contains(globals->getAccessCode());
    Log<GENERAL_INFO>({}, allowed ? "ZELSPServices::canRegister(), accessCode allows to register"
                                  : "ZELSPServices::canRegister(), accessCode does not allow to register");
    return allowed;
}

void ZELSPServicesBase::registered()
{
    if (!m_registered) {
        m_registered = true;
        globalsManager()->init();
        profileBoxManager()->init();
        contactManager()->init();
        initMessaging();
    }
    m_successOwed = true;
    if (mayTellSuccess())
        pushSuccess();
}

void ZELSPServicesBase::userProfileIsReady()
{
    m_userProfileReady = true;
    prv_pushRegistarationSuccess(u"userProfileIsReady()"_s);
}

void ZELSPServicesBase::userProfileAvatarIsReady()
{
    m_userProfileAvatarReady = true;
    prv_pushRegistarationSuccess(u"userProfileAvatarIsReady()"_s);
}

void ZELSPServicesBase::profileBoxIsReady()
{
    m_profileBoxReady = true;
    prv_pushRegistarationSuccess(u"profileBoxIsReady()"_s);
}

void ZELSPServicesBase::contactsIsReady()
{
    m_contactsReady = true;
    if (m_successPushed)
        pushContactList();
}

bool ZELSPServicesBase::prv_profileBoxIsReady() const
{
    const GlobalsManagerBase* globals = globalsManager();
    if (!globals) {
        logging::Log<logging::GENERAL_ERROR>({}, "ZELSPServices::prv_profileBoxIsReady(): null pointer");
        return false;
    }
    return !globals->getPermissions().showAppBox || m_profileBoxReady;
}

void ZELSPServicesBase::prv_pushRegistarationSuccess(const QString& trigger)
{
    if (!mayTellSuccess())
        return;
    logging::Log<logging::GENERAL_DEBUG_INFO>(
        {}, QString(u"ZELSPServices::prv_pushRegistrationSuccess() triggered by "_s + trigger));
    pushSuccess();
}

bool ZELSPServicesBase::mayTellSuccess() const
{
    return m_successOwed && m_userProfileReady && prv_profileBoxIsReady() && m_userProfileAvatarReady &&
           isSuccessSaid();
}

bool ZELSPServicesBase::isSuccessSaid() const
{
    return globalsManager()->getAccessCode() == globalnames::success();
}

void ZELSPServicesBase::pushSuccess()
{
    m_successOwed = false;
    const bool isListOwed = !m_listenersTold;
    m_successPushed = true;
    // Two events: what a slot of the first throws does not keep the second from being told.
    m_events.post([this] {
        m_successOwed = !isSuccessSaid(); // slots of earlier events may have taken long
        if (!m_successOwed)
            globalsManager()->pushRegistrationEvent(globalnames::success());
    });
    // Contacts that became ready meanwhile, in an event loop of the application's own, were told to whoever listened
    // by then: again only if somebody has come since.
    if (isListOwed) {
        m_events.post([this] {
            if (m_contactsReady && m_listenersTold != contactManager()->listenerCount())
                pushContactList();
        });
    }
    m_events.deliver();
}

void ZELSPServicesBase::pushContactList()
{
    m_listenersTold = contactManager()->listenerCount();
    contactManager()->getContactList();
}

} // namespace zelsplib
