// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonPipe.h>
#include <zel/JsonWriter.h>

#include <iface/JsonReaderAttribute.h>

#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <concepts>
#include <utility>

namespace zelsplib {

/// Hears which eco identifier belongs to a ppId.
template <typename T>
concept EcoIdEvents = std::default_initializable<T> && requires(T handler, const QString& ppid, const QString& ecoId)
{
    handler.pushEcoIdResponse(ppid, ecoId);
};

/// Asks the core service for the eco identifier that belongs to a ppId. Nothing is remembered between a request and
/// its answer: answers are told as they come, asked for or not. Owned by the facade.
template <EcoIdEvents Handler>
class EcoIdManager final : public QObject
{
public:
    explicit EcoIdManager(QSharedPointer<zel::JsonPipe> pipe)
        : m_pipe(std::move(pipe))
    {
        m_pipe->addListener(
            this, QStringLiteral("requestEcoIdResponse"),
            [this](QObject* sender, iface::JsonReaderAttribute message) { ecoIdResponseCallback(sender, message); });
    }

    void requestEcoId(const QString& ppid)
    {
        const auto request =
            QSharedPointer<zel::JsonWriter>::create(QStringLiteral("requestEcoId"), QStringLiteral("zel"));
        request->addAttribute(QStringLiteral("ppid"), ppid);
        m_pipe->send(request);
    }

    Handler& eventHandler() { return m_handler; }

private:
    void ecoIdResponseCallback(QObject*, const iface::JsonReaderAttribute& message)
    {
        QString ppid;
        QString ecoId;
        message.object().readFields("ppid", ppid, "ecoId", ecoId);
        m_handler.pushEcoIdResponse(ppid, ecoId);
    }

    Handler m_handler;
    QSharedPointer<zel::JsonPipe> m_pipe;
};

} // namespace zelsplib
