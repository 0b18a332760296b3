// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/RegistrationRequest.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace zelsplib {

RegistrationRequest::RegistrationRequest(Send send, std::function<void()> readState)
    : m_send(std::move(send))
    , m_readState(std::move(readState))
    , m_retry([this] { remind(); })
{
}

void RegistrationRequest::begin(const QString& uuid, bool silent)
{
    m_uuid = uuid;
    m_silent = silent;
    m_isRepeated = false;
    m_retry.start();
    send();
}

void RegistrationRequest::send()
{
    m_known = Known::Nothing;
    m_send(m_uuid, m_silent);
}

void RegistrationRequest::handleState(const QString& state)
{
    m_isPending = state == "Pending"_L1;
    if (!m_isPending)
        m_retry.stop();
    else if (!m_retry.isActive())
        m_retry.start();
}

void RegistrationRequest::handleAnswer()
{
    if (m_known == Known::Asked)
        m_known = Known::NothingNew;
}

void RegistrationRequest::remind()
{
    if (m_isPending || m_known != Known::NothingNew) {
        m_known = Known::Asked;
        m_readState();
    } else if (!m_isRepeated) {
        m_isRepeated = true;
        send();
    } else {
        m_retry.stop();
    }
}

} // namespace zelsplib
