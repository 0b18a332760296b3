// SPDX-License-Identifier: Apache-2.0
#include "Follower.h"

using namespace vx::platform::zel;

Follower::Follower(const QUuid& application)
    : m_context(application)
{
}

void Follower::load(int contacts)
{
    m_wanted = contacts;
    QObject::connect(&m_context, &Context::registrationStateUpdated, &m_loop,
                     [this](RegistrationState::Type state) { registrationChanged(state); });
    m_loop.exec();
}

void Follower::registrationChanged(RegistrationState::Type state)
{
    if (state == RegistrationState::Unregistered) {
        m_context.requestRegisterApplicationSilent();
    } else if (state == RegistrationState::Allowed && !m_service) {
        m_service = std::make_unique<ContactService>(&m_context);
        const auto look = [this] {
            if (m_service->isValid() && m_service->contactCount() == m_wanted)
                m_loop.quit();
        };
        QObject::connect(m_service.get(), &ContactService::contactListUpdated, &m_loop, look);
        QObject::connect(m_service.get(), &ContactService::contactUpdated, &m_loop,
                         [this](const QString& handle) { take(handle); });
        look();
    }
}

void Follower::follow(int changes, const std::function<void(int)>& seen)
{
    m_seen = seen;
    m_end = m_last + changes;
    m_loop.exec();
}

void Follower::take(const QString& handle)
{
    const int number = m_service->contact(handle).personalMessage().toInt();
    m_misplaced += number != m_last + 1;
    m_last = number;
    if (m_seen)
        m_seen(number);
    if (number >= m_end)
        m_loop.quit();
}
