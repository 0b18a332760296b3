// SPDX-License-Identifier: Apache-2.0
#include <splib/ecoid/EcoIdManagerBase.h>

#include <zel/JsonWriter.h>

#include <utility>

namespace zelsplib {

EcoIdManagerBase::EcoIdManagerBase(QSharedPointer<zel::JsonPipe> pipe)
    : m_pipe(std::move(pipe))
{
    m_pipe->addListener(
        this, QStringLiteral("requestEcoIdResponse"),
        [this](QObject* sender, iface::JsonReaderAttribute message) { ecoIdResponseCallback(sender, message); });
}

void EcoIdManagerBase::requestEcoId(const QString& ppid)
{
    const auto request = QSharedPointer<zel::JsonWriter>::create(QStringLiteral("requestEcoId"), QStringLiteral("zel"));
    request->addAttribute(QStringLiteral("ppid"), ppid);
    m_pipe->send(request);
}

void EcoIdManagerBase::ecoIdResponseCallback(QObject*, iface::JsonReaderAttribute message)
{
    const iface::JsonObjectReader body = message.object();
    QString ppid;
    QString ecoId;
    body.readString("ppid", ppid);
    body.readString("ecoId", ecoId);
    pushEcoIdResponse(ppid, ecoId);
}

} // namespace zelsplib
