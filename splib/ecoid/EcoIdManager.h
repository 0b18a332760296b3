// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/ecoid/EcoIdQuestion.h>

#include <concepts>
#include <functional>

namespace zelsplib {

/// Hears which eco identifier belongs to a ppId.
template <typename T>
concept EcoIdEvents = std::default_initializable<T> && requires(T handler, const QString& ppid, const QString& ecoId)
{
    handler.pushEcoIdResponse(ppid, ecoId);
};

/// Asks the core service for the eco identifier that belongs to a ppId. Owned by the facade.
template <EcoIdEvents Handler>
class EcoIdManager final : public EcoIdQuestion
{
public:
    explicit EcoIdManager(const QSharedPointer<zel::JsonPipe>& pipe)
        : EcoIdQuestion(pipe, {"requestEcoId", "ppid", "ecoId"},
                        std::bind_front(&EcoIdManager::ecoIdResponseCallback, this))
    {
    }

    void requestEcoId(const QString& ppid) { ask(ppid); }
    Handler& eventHandler() { return m_handler; }

private:
    void ecoIdResponseCallback(const QString& ppid, const QString& ecoId) { m_handler.pushEcoIdResponse(ppid, ecoId); }

    Handler m_handler;
};

} // namespace zelsplib
