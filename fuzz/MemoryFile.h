// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Fuzzing.h"

#include <QtCore/QByteArrayView>

#include <sys/mman.h>
#include <unistd.h>

/// A file that is nowhere but in memory, for code that wants a path or a descriptor.
class MemoryFile
{
public:
    explicit MemoryFile(QByteArrayView contents = {})
        : m_descriptor(::memfd_create("input", MFD_CLOEXEC))
    {
        require(::write(m_descriptor, contents.data(), static_cast<size_t>(contents.size())) == contents.size(),
                "the input is written");
        ::lseek(m_descriptor, 0, SEEK_SET);
    }
    MemoryFile(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(m_descriptor); }

    int descriptor() const { return m_descriptor; }
    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

private:
    const int m_descriptor;
};
