// SPDX-License-Identifier: Apache-2.0
#include <quick/Utils.h>

namespace zelquick {

Utils::Utils(QObject* parent)
    : ContextObject(parent)
{
}

bool Utils::requestEcoId(const QString& ppId)
{
    return isThere(m_utils, "requestEcoId()") && m_utils->requestEcoId(ppId);
}

bool Utils::requestEcoIdStatus(const QString& ecoId)
{
    return isThere(m_utils, "requestEcoIdStatus()") && m_utils->requestEcoIdStatus(ecoId);
}

bool Utils::sendContactInvitation(const QString& ecoId, const QString& displayName, const QString& message)
{
    return isThere(m_utils, "sendContactInvitation()") && m_utils->sendContactInvitation(ecoId, displayName, message);
}

bool Utils::invokeChat(const QString& ecoId)
{
    return isThere(m_utils, "invokeChat()") && m_utils->invokeChat(ecoId);
}

void Utils::start(zel::Context* context, QObject* owner)
{
    m_utils = new zel::Utils(context, owner);
    connect(m_utils, &zel::Utils::ecoIdUpdated, this, &Utils::ecoIdUpdated);
    connect(m_utils, &zel::Utils::ecoIdStatusUpdated, this, &Utils::ecoIdStatusUpdated);
}

} // namespace zelquick
