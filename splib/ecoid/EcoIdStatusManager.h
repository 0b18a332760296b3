// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/ecoid/EcoIdQuestion.h>

#include <concepts>
#include <functional>

namespace zelsplib {

/// Hears what an eco identifier is to the user, in the core service's words.
template <typename T>
concept EcoIdStatusEvents = std::default_initializable<T> &&
    requires(T handler, const QString& ecoId, const QString& status)
{
    handler.pushEcoIdStatusResponse(ecoId, status);
};

/// Asks the core service whether an eco identifier is a contact already or has been invited. Owned by the facade.
template <EcoIdStatusEvents Handler>
class EcoIdStatusManager final : public EcoIdQuestion
{
public:
    explicit EcoIdStatusManager(const QSharedPointer<zel::JsonPipe>& pipe)
        : EcoIdQuestion(pipe, {"requestEcoIdStatus", "ecoId", "status"},
                        std::bind_front(&EcoIdStatusManager::ecoIdStatusResponseCallback, this))
    {
    }

    void requestEcoIdStatus(const QString& ecoId) { ask(ecoId); }
    Handler& eventHandler() { return m_handler; }

private:
    void ecoIdStatusResponseCallback(const QString& ecoId, const QString& status)
    {
        m_handler.pushEcoIdStatusResponse(ecoId, status);
    }

    Handler m_handler;
};

} // namespace zelsplib
