// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/RegistrationRequest.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace zelsplib {

RegistrationRequest::RegistrationRequest(Actions actions)
    : m_actions(std::move(actions))
    , m_retry([this] { remind(); })
{
}

void RegistrationRequest::begin(const QString& uuid, bool silent)
{
    m_uuid = uuid;
    m_silent = silent;
    m_isPending = m_isReading = m_isRead = m_isRepeated = false;
    m_retry.start();
    m_actions.send(uuid, silent);
}

void RegistrationRequest::heed(const QString& state)
{
    m_isPending = state == "Pending"_L1;
    if (!m_isPending)
        m_retry.stop();
    else if (!m_retry.isActive())
        m_retry.start();
}

void RegistrationRequest::remind()
{
    if (m_isPending || !m_isRead) {
        m_isReading = true;
        m_actions.readState();
    } else if (std::exchange(m_isRepeated, true)) {
        m_retry.stop();
    } else {
        m_isReading = m_isRead = false;
        m_actions.send(m_uuid, m_silent);
    }
}

} // namespace zelsplib
