// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/detail/MakeShared.h>
#include <zel/JsonWriter.h>

#include <QtCore/QLatin1String>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace zelsplib {

/// Adds several members, in this order: name, value, name, value. What readFields() reads.
template <class T, class... More>
void writeFields(zel::JsonWriter& object, const char* name, const T& value, const More&... more)
{
    object.addAttribute(QLatin1String(name), value);
    if constexpr (sizeof...(More) > 0)
        writeFields(object, more...);
}

/// A request with these members, as writeFields() takes them, to be sent or to be added to.
///
///     pipe.send(makeRequest("registrationRequest", "uuid", uuid, "silent", silent));
template <class... Fields>
QSharedPointer<zel::JsonWriter> makeRequest(const char* name, const Fields&... fields)
{
    const auto request = iface::detail::makeShared<zel::JsonWriter>(QLatin1String(name), QStringLiteral("zel"));
    writeFields(*request, fields...);
    return request;
}

} // namespace zelsplib
