// SPDX-License-Identifier: Apache-2.0
#include <iface/JsonSource.h>

#include <iface/JsonReaderAttribute.h>
#include <iface/Logging.h>

using namespace Qt::StringLiterals;

namespace iface {

namespace {

/// Enters an attribute's child as a reader of one kind. The line names the operation in the log, and stays as it is.
template <class Reader>
Reader enter(const JsonNodeReader* parent, JsonChildIdentifier child, int line)
{
    if (!parent || !parent->source()) {
        ZEL_IFACE_LOG("src/JsonSource", line, LogLevel::Error, LogCategory::General, u"NULL source!!"_s);
        return {};
    }
    if (!parent->isValid())
        return Reader(parent->source(), nullptr, false);
    bool ok = false;
    void* const node = parent->source()->push(parent->node(), child, ok);
    return Reader(parent->source(), node, ok);
}

} // namespace

JsonSource::~JsonSource() = default;

bool JsonSource::visitMembers(void*, JsonMemberVisitor&)
{
    return false;
}

JsonNodeReader JsonSource::startParsing()
{
    return {this, getRoot(), true};
}

JsonArrayReader JsonReaderAttribute::array() const
{
    return enter<JsonArrayReader>(m_parent, m_id, 35);
}

JsonObjectReader JsonReaderAttribute::object() const
{
    return enter<JsonObjectReader>(m_parent, m_id, 57);
}

} // namespace iface
