// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/RetryTimer.h>

#include <QtCore/QString>

#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace zelsplib {

/// Asks again for whatever has had no answer, each thing in its own time: see iface::RetryTimer.
///
/// A member of who waits; goes with it.
class Retries
{
public:
    /// `ask` is called with what is overdue, and may begin and end any wait.
    explicit Retries(std::function<void(const QString&)> ask)
        : m_ask(std::move(ask))
    {
    }

    /// Has `key` asked for again until end(). One that is waited for already goes on as it did.
    void begin(const QString& key)
    {
        auto& timer = m_timers[key];
        if (timer)
            return;
        timer = std::make_unique<iface::RetryTimer>([this, key] { m_ask(key); });
        timer->start();
    }
    void end(const QString& key) { m_timers.erase(key); }

private:
    std::function<void(const QString&)> m_ask;
    std::map<QString, std::unique_ptr<iface::RetryTimer>> m_timers;
};

} // namespace zelsplib
