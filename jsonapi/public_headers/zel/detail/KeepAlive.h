// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QExplicitlySharedDataPointer>

namespace zel::detail {

/// Holds a counted object for as long as this lives. One that nobody counts belongs to somebody else and is left alone:
/// to count it now would delete it in the end.
template <class Shared>
class KeepAlive
{
public:
    explicit KeepAlive(Shared* object)
        : m_hold(object->ref.loadRelaxed() > 0 ? object : nullptr)
    {
    }

private:
    QExplicitlySharedDataPointer<Shared> m_hold;
};

} // namespace zel::detail
