// SPDX-License-Identifier: Apache-2.0
#include <quick/EcoContact.h>

namespace zelquick {

EcoContact::EcoContact(QObject* parent)
    : ContextObject(parent)
{
}

void EcoContact::setPpId(const QString& ppId)
{
    if (ppId == m_ppId)
        return;
    m_ppId = ppId;
    lookUp();
    Q_EMIT ppIdChanged();
}

bool EcoContact::invite(const QString& displayName, const QString& message)
{
    if (m_ecoId.isEmpty() || !m_utils->sendContactInvitation(m_ecoId, displayName, message))
        return false;
    m_isInvited = true;
    Q_EMIT statusChanged();
    return true;
}

bool EcoContact::chat()
{
    return !m_ecoId.isEmpty() && m_utils->invokeChat(m_ecoId);
}

void EcoContact::start(zel::Context* context, QObject* owner)
{
    m_utils = new zel::Utils(context, owner);
    // Each hears the answers to all.
    connect(m_utils, &zel::Utils::ecoIdUpdated, this, [this](const QString& ppId, const QString& ecoId) {
        if (ppId != m_ppId)
            return;
        m_ecoId = ecoId;
        if (!ecoId.isEmpty())
            m_utils->requestEcoIdStatus(ecoId);
        Q_EMIT ecoIdChanged();
    });
    connect(m_utils, &zel::Utils::ecoIdStatusUpdated, this,
            [this](const QString& ecoId, zel::EcoIdStatus::Type status) {
                if (ecoId != m_ecoId)
                    return;
                m_status = status;
                Q_EMIT statusChanged();
            });
    connect(context, &zel::Context::readyChanged, owner, [this] { lookUp(); });
    lookUp();
}

void EcoContact::forget()
{
    m_utils = nullptr;
    lookUp();
}

void EcoContact::lookUp()
{
    m_ecoId.clear();
    m_status.reset();
    m_isInvited = false;
    if (m_utils && context()->publicContext()->isReady() && !m_ppId.isEmpty())
        m_utils->requestEcoId(m_ppId);
    Q_EMIT ecoIdChanged();
    Q_EMIT statusChanged();
}

} // namespace zelquick
