// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/RequestError.h>

#include <QtCore/QDebug>
#include <QtCore/QMetaEnum>

namespace vx::platform::zel {

RequestError::RequestError(Reason reason, const QString& errorString)
    : m_reason(reason)
    , m_what(errorString.toUtf8())
{
}

RequestError::~RequestError() = default;

const char* RequestError::what() const noexcept
{
    return m_what.constData();
}

void RequestError::raise() const
{
    throw *this;
}

RequestError* RequestError::clone() const
{
    return new RequestError(*this);
}

QDebug operator<<(QDebug debug, RequestError::Reason reason)
{
    const QDebugStateSaver saver(debug);
    return debug.nospace() << QMetaEnum::fromType<RequestError::Reason>().valueToKey(reason);
}

} // namespace vx::platform::zel
