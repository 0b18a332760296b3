// SPDX-License-Identifier: Apache-2.0
#include <zel/JsonWriterAttribute.h>

namespace zel {

JsonWriterAttribute::JsonWriterAttribute(const QSharedPointer<JsonWriter>& parent, const char* name)
    : m_writer(parent)
    , m_name(name)
{
}

QSharedPointer<JsonWriter> JsonWriterAttribute::object() const
{
    return m_writer->addChild(QString::fromUtf8(m_name), JsonWriter::Object);
}

QSharedPointer<JsonWriter> JsonWriterAttribute::array() const
{
    return m_writer->addChild(QString::fromUtf8(m_name), JsonWriter::Array);
}

} // namespace zel
