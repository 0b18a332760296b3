// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/ZELSPServicesBase.h>
#include <splib/channel/PPSManager.h>
#include <splib/contacts/PlatformContactManager.h>
#include <splib/ecoid/EcoIdManager.h>
#include <splib/ecoid/EcoIdStatusManager.h>
#include <splib/globals/GlobalsManager.h>
#include <splib/messaging/PlatformMessagingManager.h>
#include <splib/profilebox/ProfileBoxManager.h>

#include <zel/JsonStream.h>
#include <zel/ListApiMultiplexer.h>

#include <memory>

namespace zelsplib {

/// The root of the services core: opens the channel to the core service, builds every manager and owns them.
///
/// One for the process, made at the first call of getServices() and destroyed at exit; everything but that call
/// belongs to the thread that made it, whose event loop must run. The event-handler types are those of whoever shows
/// the services to applications; each manager holds its handlers by value.
///
/// Tests build their own on a channel or on a pipe of theirs; one on a pipe has no ppsManager().
template <RegistrationEvents Registration, UserProfileEvents UserProfile, ContactListEvents ContactList,
          ConnectionEvents Connection, ProfileBoxEvents Box, InvocationRequests Invocations, EcoIdEvents EcoId,
          EcoIdStatusEvents EcoIdStatus>
class ZELSPServices final : public ZELSPServicesBase
{
public:
    using Globals = GlobalsManager<Registration, UserProfile>;
    using Contacts = PlatformContactManager<ContactList>;
    using Messaging = PlatformMessagingManager<Connection, Invocations>;

    static ZELSPServices* getServices()
    {
        auto& services = servicesOfTheProcess();
        if (!services)
            services.reset(new ZELSPServices);
        return services.get();
    }
    /// The next call of getServices() makes everything anew. On the thread of the services, when nobody uses them.
    static void forgetServices() { servicesOfTheProcess().reset(); }

    explicit ZELSPServices(const QSharedPointer<PPSManager>& channel)
        : m_ppsManager(channel)
    {
        build(channel);
    }
    explicit ZELSPServices(const QSharedPointer<zel::JsonPipe>& pipe) { build(pipe); }

    QSharedPointer<PPSManager> ppsManager() const { return m_ppsManager; }
    QSharedPointer<zel::ListApiMultiplexer> listApi() const { return m_listApi; }
    QSharedPointer<Globals> globals() const { return m_globals; }
    QSharedPointer<zel::JsonStream> jsonStream() const { return m_jsonStream; }
    QSharedPointer<Contacts> contacts() const { return m_contacts; }
    QSharedPointer<Messaging> messaging() const { return m_messaging; }
    QSharedPointer<EcoIdManager<EcoId>> ecoId() const { return m_ecoId; }
    QSharedPointer<ProfileBoxManager<Box>> profileBox() const { return m_profileBox; }
    QSharedPointer<EcoIdStatusManager<EcoIdStatus>> ecoIdStatus() const { return m_ecoIdStatus; }

private:
    static std::unique_ptr<ZELSPServices>& servicesOfTheProcess()
    {
        static std::unique_ptr<ZELSPServices> services(new ZELSPServices);
        return services;
    }

    ZELSPServices()
    {
        try {
            m_ppsManager =
                QSharedPointer<PPSManager>::create(objectPath(), QStringLiteral("platform"), QStringLiteral("zel"));
            build(m_ppsManager);
        } catch (int error) {
            setInitializationError(error);
        }
    }

    void build(const QSharedPointer<zel::JsonPipe>& pipe)
    {
        m_listApi = QSharedPointer<zel::ListApiMultiplexer>::create(pipe);
        m_jsonStream = QSharedPointer<zel::JsonStream>::create(pipe);
        m_globals = QSharedPointer<Globals>::create(m_listApi, m_jsonStream, this);
        m_ecoId = QSharedPointer<EcoIdManager<EcoId>>::create(pipe);
        m_ecoIdStatus = QSharedPointer<EcoIdStatusManager<EcoIdStatus>>::create(pipe);
        m_contacts = QSharedPointer<Contacts>::create(m_listApi, m_jsonStream, this);
        m_messaging = QSharedPointer<Messaging>::create(m_listApi, m_jsonStream);
        m_profileBox = QSharedPointer<ProfileBoxManager<Box>>::create(m_listApi, m_jsonStream, this);
        setInitialized();
    }

    GlobalsManagerBase* globalsManager() const override { return m_globals.data(); }
    ProfileBoxManagerBase* profileBoxManager() const override { return m_profileBox.data(); }
    PlatformContactManagerBase* contactManager() const override { return m_contacts.data(); }
    void initMessaging() override { m_messaging->init(m_contacts->contactList()); }

    QSharedPointer<PPSManager> m_ppsManager;
    QSharedPointer<zel::ListApiMultiplexer> m_listApi;
    QSharedPointer<Globals> m_globals;
    QSharedPointer<zel::JsonStream> m_jsonStream;
    QSharedPointer<Contacts> m_contacts;
    QSharedPointer<Messaging> m_messaging;
    QSharedPointer<EcoIdManager<EcoId>> m_ecoId;
    QSharedPointer<ProfileBoxManager<Box>> m_profileBox;
    QSharedPointer<EcoIdStatusManager<EcoIdStatus>> m_ecoIdStatus;
};

} // namespace zelsplib
