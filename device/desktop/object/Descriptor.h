// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace device {

// A file descriptor with one owner.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    Descriptor(Descriptor&& other) noexcept
        : m_number(other.release())
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~Descriptor() { reset(); }

    int get() const { return m_number; }
    explicit operator bool() const { return m_number != -1; }
    int release() { return std::exchange(m_number, -1); }
    // Leaves errno as it is: failures are cleaned up after before they are reported.
    void reset(int number = -1)
    {
        const int old = std::exchange(m_number, number);
        if (old == -1)
            return;
        const int savedError = errno;
        ::close(old);
        errno = savedError;
    }

private:
    int m_number = -1;
};

} // namespace device
