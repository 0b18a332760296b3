// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/ecoid/EcoIdManagerBase.h>

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
class EcoIdManager final : public EcoIdManagerBase
{
public:
    explicit EcoIdManager(QSharedPointer<zel::JsonPipe> pipe)
        : EcoIdManagerBase(std::move(pipe))
    {
    }

    Handler& eventHandler() { return m_handler; }

private:
    void pushEcoIdResponse(const QString& ppid, const QString& ecoId) override
    {
        m_handler.pushEcoIdResponse(ppid, ecoId);
    }

    Handler m_handler;
};

} // namespace zelsplib
