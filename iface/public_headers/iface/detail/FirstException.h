// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>

namespace iface::detail {

/// Lets every step of an announcement be taken although some of them throw: the first exception goes on in the end.
class FirstException
{
public:
    /// Whether the step was taken to its end.
    template <class Step>
    bool guard(Step&& step)
    {
        try {
            step();
            return true;
        } catch (...) {
            if (!m_first)
                m_first = std::current_exception();
            return false;
        }
    }
    /// To be called last: whoever made this may be gone.
    void rethrow() const
    {
        if (m_first)
            std::rethrow_exception(m_first);
    }

private:
    std::exception_ptr m_first;
};

} // namespace iface::detail
