// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QMetaEnum>
#include <QtCore/QString>

namespace zelctl {

/// The enumerator's name, or the number for a value that has none.
template <typename Enumeration>
QString nameOf(Enumeration value)
{
    const char* name = QMetaEnum::fromType<Enumeration>().valueToKey(value);
    return name ? QString::fromLatin1(name) : QString::number(static_cast<int>(value));
}

} // namespace zelctl
