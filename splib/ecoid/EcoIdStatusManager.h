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

/// Hears what an eco identifier is to the user, in the core service's words.
template <typename T>
concept EcoIdStatusEvents = std::default_initializable<T> &&
    requires(T handler, const QString& ecoId, const QString& status)
{
    handler.pushEcoIdStatusResponse(ecoId, status);
};

/// Asks the core service whether an eco identifier is a contact already or has been invited. Nothing is remembered
/// between a request and its answer: answers are told as they come, asked for or not. Owned by the facade.
template <EcoIdStatusEvents Handler>
class EcoIdStatusManager final : public QObject
{
public:
    explicit EcoIdStatusManager(QSharedPointer<zel::JsonPipe> pipe)
        : m_pipe(std::move(pipe))
    {
        m_pipe->addListener(this, QStringLiteral("requestEcoIdStatusResponse"),
                            [this](QObject* sender, iface::JsonReaderAttribute message) {
                                ecoIdStatusResponseCallback(sender, message);
                            });
    }

    void requestEcoIdStatus(const QString& ecoId)
    {
        const auto request =
            QSharedPointer<zel::JsonWriter>::create(QStringLiteral("requestEcoIdStatus"), QStringLiteral("zel"));
        request->addAttribute(QStringLiteral("ecoId"), ecoId);
        m_pipe->send(request);
    }

    Handler& eventHandler() { return m_handler; }

private:
    void ecoIdStatusResponseCallback(QObject*, const iface::JsonReaderAttribute& message)
    {
        QString ecoId;
        QString status;
        message.object().readFields("status", status, "ecoId", ecoId);
        m_handler.pushEcoIdStatusResponse(ecoId, status);
    }

    Handler m_handler;
    QSharedPointer<zel::JsonPipe> m_pipe;
};

} // namespace zelsplib
