// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/ecoid/EcoIdStatusManagerBase.h>

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
class EcoIdStatusManager final : public EcoIdStatusManagerBase
{
public:
    explicit EcoIdStatusManager(QSharedPointer<zel::JsonPipe> pipe)
        : EcoIdStatusManagerBase(std::move(pipe))
    {
    }

    Handler& eventHandler() { return m_handler; }

private:
    void pushEcoIdStatusResponse(const QString& ecoId, const QString& status) override
    {
        m_handler.pushEcoIdStatusResponse(ecoId, status);
    }

    Handler m_handler;
};

} // namespace zelsplib
