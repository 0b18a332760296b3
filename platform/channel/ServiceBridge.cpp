// SPDX-License-Identifier: Apache-2.0
#include <platform/channel/ServiceBridge.h>

#include <platform/channel/PPSMonitor.h>
#include <platform/channel/Trace.h>
#include <platform/contacts/ContactServiceDelegate.h>
#include <platform/context/ApplicationDelegate.h>
#include <platform/ecoid/UtilsDelegate.h>
#include <platform/messaging/MessageServiceDelegate.h>
#include <platform/mistakes/Mistakes.h>
#include <platform/profile/UserProfileDelegate.h>
#include <platform/profilebox/ProfileBoxDelegate.h>
#include <vx/platform/zel/EcoIdStatus.h>
#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/Permission.h>
#include <vx/platform/zel/PermissionValue.h>
#include <vx/platform/zel/UserStatus.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QMutex>
#include <QtCore/QMutexLocker>
#include <QtCore/QScopeGuard>
#include <QtCore/QScopedValueRollback>
#include <QtCore/QThread>

#include <cerrno>
#include <utility>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

// Both are constant-initialised: they are whole before any code of the library can run.
static ServiceBridge* _pinstance = nullptr;
static QMutex contextEventHandlerMutex;
static thread_local ServiceBridge* beingMade = nullptr;

static void registerMetaTypes()
{
    qRegisterMetaType<RegistrationState::Type>();
    qRegisterMetaType<Permission::Type>();
    qRegisterMetaType<PermissionValue::Type>();
    qRegisterMetaType<UserStatus::Type>();
    qRegisterMetaType<ImageType::Type>();
    qRegisterMetaType<EcoIdStatus::Type>();
}

ServiceBridge* ServiceBridge::instance()
{
    if (beingMade)
        return beingMade;
    QMutexLocker locker(&contextEventHandlerMutex);
    if (_pinstance)
        return _pinstance;
    _pinstance = new ServiceBridge(nullptr);
    locker.unlock();
    if (!_pinstance->isInitialized())
        _pinstance->warnThatThereIsNoService();
    return _pinstance;
}

static void letGoWithTheApplication()
{
    ServiceBridge::letGo();
}

bool ServiceBridge::letGo()
{
    QMutexLocker locker(&contextEventHandlerMutex);
    if (!_pinstance)
        return true;
    if (_pinstance->m_hold.use_count() > 1 || _pinstance->m_dispatching > 0 ||
        _pinstance->thread() != QThread::currentThread())
        return false;
    // The monitor watches what the services close, and the services report to the delegates: in this order.
    const std::unique_ptr<ServiceBridge> last(std::exchange(_pinstance, nullptr));
    locker.unlock(); // a message handler of the application may use the library
    delete std::exchange(last->m_monitor, nullptr);
    Services::forgetServices();
    mistakes::forget();
    qRemovePostRoutine(letGoWithTheApplication);
    return true;
}

const char* ServiceBridge::root()
{
    const QMutexLocker locker(&contextEventHandlerMutex);
    return _pinstance ? _pinstance->m_root.c_str() : nullptr;
}

ServiceBridge::ServiceBridge(QObject* parent)
    : QObject(parent)
{
    registerMetaTypes();
    // Not with an application object that the services make for themselves: that one goes with them.
    if (QCoreApplication::instance())
        qAddPostRoutine(letGoWithTheApplication);
    m_services = Services::getServices();

    m_registrar = new ApplicationDelegate(m_services, this);
    beingMade = this;
    const auto made = qScopeGuard([] { beingMade = nullptr; });
    connect(m_registrar, &ApplicationDelegate::registrationEventReceived, this,
            &ServiceBridge::registrationAccessStatusUpdated);

    if (!m_services->isInitialized()) {
        qCDebug(lcPlatform) << "ZELSP Services not initialized -- Abort ";
        return;
    }

    m_initialized = true;
    qCDebug(lcPlatform) << "ZELSP Services initialized";
    m_userProfile = new UserProfileDelegate(m_services, this);
    m_contactService = new ContactServiceDelegate(m_services, this);
    m_messageService = new MessageServiceDelegate(m_services, this);
    m_utils = new UtilsDelegate(m_services, this);
    m_profileBox = new ProfileBoxDelegate(m_services, this);
    introduceToEventHandlers();

    m_monitor = new PPSMonitor(m_services->ppsManager()->getPpsHandle(), this);
    connect(m_monitor, &PPSMonitor::ppsMessageReceived, this, &ServiceBridge::dispatchPpsMessage);
    connect(m_services->ppsManager().data(), &zelsplib::PPSManager::messageTooLong, this, mistakes::warnOfLongMessage);
    m_services->globals()->sendTpaApi(u"Qt"_s);
}

/// The reason is in the system log, which few look into first; a developer has to learn it here.
void ServiceBridge::warnThatThereIsNoService() const
{
    const std::string path = device::resolveObjectPath(Services::objectPath().toStdString());
    const int error = m_services->initializationError();
    const bool isAbsent = error == ENOENT || error == ENOTDIR || error == ECONNREFUSED;
    qCWarning(lcPlatform, "cannot open %s: %ls%s", path.c_str(), qUtf16Printable(qt_error_string(error)),
              isAbsent ? "; start the core service, or a simulated one and set PPS_ROOT to its folder, before the "
                         "application"
                       : "");
}

void ServiceBridge::introduceToEventHandlers()
{
    m_services->globals()->registrationEventHandler().setRegistrationBridge(this);
    m_services->globals()->userProfileEventHandler().setUserProfileBridge(this);
    m_services->contacts()->eventHandler().setContactServiceBridge(this);
    m_services->messaging()->invocationManager().setMessageServiceBridge(this);
    m_services->ecoId()->eventHandler().setEcoIdBridge(this);
    m_services->ecoIdStatus()->eventHandler().setEcoIdStatusBridge(this);
    m_services->profileBox()->eventHandler().setProfileBoxBridge(this);
}

/// Hands one read to the listeners of its type; they all run inside this call, which may be entered again from a nested
/// event loop.
void ServiceBridge::dispatchPpsMessage(QByteArray ppsMessage)
{
    const QScopedValueRollback dispatching(m_dispatching, m_dispatching + 1);
    const auto ppsManager = m_services->ppsManager();
    const auto length = qstrnlen(ppsMessage.constData(), static_cast<size_t>(ppsMessage.size()));
    ppsMessage.truncate(static_cast<qsizetype>(length));
    ppsManager->dispatchMessageReceived(ppsMessage);
}

/// Deliberately does nothing: the states reach the public classes from the registrar itself.
void ServiceBridge::registrationAccessStatusUpdated(vx::platform::zel::RegistrationState::Type) {}

} // namespace vx::platform::zel
