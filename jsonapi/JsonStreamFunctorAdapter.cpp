// SPDX-License-Identifier: Apache-2.0
#include <zel/JsonStreamFunctorAdapter.h>

namespace zel {

JsonStreamFunctorAdapter::JsonStreamFunctorAdapter(const QSharedPointer<JsonStream>& stream,
                                                   const JsonStream::Callback& function, QObject* parent)
    : QObject(parent)
    , m_stream(stream)
    , m_function(function)
{
    connect(m_stream.data(), &JsonStream::dataReceived, this, &JsonStreamFunctorAdapter::dataReceived);
}

JsonStreamFunctorAdapter::~JsonStreamFunctorAdapter() = default;

void JsonStreamFunctorAdapter::dataReceived(const QString& id, const QVariant& data)
{
    const JsonStream::Callback function = m_function; // the function may destroy the adapter
    function(id, data);
}

} // namespace zel
