// SPDX-License-Identifier: Apache-2.0
#include <zel/JsonStreamFunctorAdapter.h>

namespace zel {

JsonStreamFunctorAdapter::JsonStreamFunctorAdapter(const QSharedPointer<JsonStream>& stream,
                                                   const JsonStream::Callback& function, QObject* parent)
    : QObject(parent)
    , m_stream(stream)
    , m_function(function)
{
    m_stream->m_adapters.append(this);
}

JsonStreamFunctorAdapter::~JsonStreamFunctorAdapter()
{
    m_stream->m_adapters.removeOne(this);
}

void JsonStreamFunctorAdapter::dataReceived(const QString& id, const QVariant& data)
{
    const JsonStream::Callback function = m_function; // the function may destroy the adapter
    function(id, data);
}

} // namespace zel
