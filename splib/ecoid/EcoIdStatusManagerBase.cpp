// SPDX-License-Identifier: Apache-2.0
#include <splib/ecoid/EcoIdStatusManagerBase.h>

#include <zel/JsonWriter.h>

#include <utility>

namespace zelsplib {

EcoIdStatusManagerBase::EcoIdStatusManagerBase(QSharedPointer<zel::JsonPipe> pipe)
    : m_pipe(std::move(pipe))
{
    m_pipe->addListener(
        this, QStringLiteral("requestEcoIdStatusResponse"),
        [this](QObject* sender, iface::JsonReaderAttribute message) { ecoIdStatusResponseCallback(sender, message); });
}

void EcoIdStatusManagerBase::requestEcoIdStatus(const QString& ecoId)
{
    const auto request =
        QSharedPointer<zel::JsonWriter>::create(QStringLiteral("requestEcoIdStatus"), QStringLiteral("zel"));
    request->addAttribute(QStringLiteral("ecoId"), ecoId);
    m_pipe->send(request);
}

void EcoIdStatusManagerBase::ecoIdStatusResponseCallback(QObject*, iface::JsonReaderAttribute message)
{
    const iface::JsonObjectReader body = message.object();
    QString status;
    QString ecoId;
    body.readString("status", status);
    body.readString("ecoId", ecoId);
    pushEcoIdStatusResponse(ecoId, status);
}

} // namespace zelsplib
