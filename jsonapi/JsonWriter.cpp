// SPDX-License-Identifier: Apache-2.0
#include <zel/JsonWriter.h>

#include <iface/detail/MakeShared.h>

#include <device/Encoder.h>

#include <QtCore/QDebug>
#include <QtCore/QScopeGuard>

#include <new>

namespace zel {

namespace {

/// A string as UTF-8 with a NUL behind it for the length of one call; short ASCII, which is nearly everything, without
/// an allocation.
class Utf8
{
public:
    explicit Utf8(const QString& text)
    {
        m_size = size_t(text.size());
        char16_t seen = 0;
        if (m_size < sizeof(m_small)) {
            // Not utf16(), which copies a string that is no allocation of its own, such as a literal.
            const QChar* const units = text.constData();
            for (size_t i = 0; i < m_size; ++i) {
                seen |= units[i].unicode();
                m_small[i] = char(units[i].unicode());
            }
            m_small[m_size] = '\0';
        }
        if (m_size >= sizeof(m_small) || seen > 0x7f) {
            m_large = text.toUtf8();
            m_data = m_large.constData();
            m_size = size_t(m_large.size());
        }
    }
    Utf8(const Utf8&) = delete;
    Utf8& operator=(const Utf8&) = delete;

    device::Text text() const { return {m_data, m_size}; }

private:
    char m_small[256];
    QByteArray m_large;
    const char* m_data = m_small;
    size_t m_size;
};

/// The name of a member, or none where it stands in an array.
class MemberName
{
public:
    MemberName(const QString& name, JsonWriter::AttributeType parent)
        : m_text(name)
        , m_named(parent != JsonWriter::Array)
    {
    }

    device::Text text() const { return m_named ? m_text.text() : device::Text(); }

private:
    Utf8 m_text;
    bool m_named;
};

} // namespace

/// The buffer that all writers of a message share. It lives as long as the last of them.
struct JsonWriter::Tree
{
    void release()
    {
        if (--writers == 0)
            delete this;
    }

    device::Encoder encoder{device::Encoder::Attributes};
    int writers = 0;
};

JsonWriter::JsonWriter(const QString& name, const QString& ignored)
    : JsonWriter(name, Object, ignored)
{
}

JsonWriter::JsonWriter(const QString& name, AttributeType type, const QString&)
    : m_name(name)
    , m_type(type)
    , m_root(true)
    , m_tree(new Tree)
{
    ++m_tree->writers;
    m_tree->encoder.startObject("dat");
    begin();
}

JsonWriter::JsonWriter(const QString& name, AttributeType type, Tree* tree)
    : m_name(name)
    , m_type(type)
    , m_root(false)
    , m_tree(tree)
{
    ++m_tree->writers;
    begin();
}

JsonWriter::~JsonWriter()
{
    // A child closes itself, without the text that toString() would build. A root that was never sent just goes.
    if (!m_root && !m_finished)
        closeNode();
    m_tree->release();
}

/// A writer that was never made has no destructor to let go of the tree.
void JsonWriter::begin()
{
    auto letGo = qScopeGuard([this] { m_tree->release(); });
    openNode();
    letGo.dismiss();
}

void JsonWriter::openNode()
{
    const Utf8 name(m_name);
    const device::Text nameOrNone = m_name.isEmpty() ? device::Text() : name.text();
    switch (m_type) {
    case Array: // named even when the name is empty, unlike the others
        m_tree->encoder.startArray(name.text());
        break;
    case Object:
        m_tree->encoder.startObject(nameOrNone);
        break;
    case Null:
        m_tree->encoder.addNull(nameOrNone);
        break;
    }
}

void JsonWriter::closeNode()
{
    m_finished = true;
    if (m_type == Array) {
        m_tree->encoder.endArray();
    } else if (m_type == Object) {
        m_tree->encoder.endObject();
    }
}

void JsonWriter::addAttribute(const QString& name)
{
    if (!isReadOnly())
        m_tree->encoder.addNull(MemberName(name, m_type).text());
}

void JsonWriter::addAttribute(const QString& name, bool value)
{
    if (!isReadOnly())
        m_tree->encoder.addBool(MemberName(name, m_type).text(), value);
}

void JsonWriter::addAttribute(const QString& name, const QString& value)
{
    if (!isReadOnly())
        m_tree->encoder.addString(MemberName(name, m_type).text(), Utf8(value).text());
}

void JsonWriter::addAttribute(const QString& name, const char* value)
{
    addAttribute(name, QString::fromUtf8(value));
}

void JsonWriter::addAttribute(const QString& name, int value)
{
    if (!isReadOnly())
        m_tree->encoder.addInt(MemberName(name, m_type).text(), value);
}

QSharedPointer<JsonWriter> JsonWriter::addChild(const QString& name, AttributeType type)
{
    if (isReadOnly())
        return {};
    return iface::detail::shared(
        std::unique_ptr<JsonWriter>(new JsonWriter(m_type == Array ? QString() : name, type, m_tree)));
}

void JsonWriter::next()
{
    if (m_root)
        return;
    if (!m_finished)
        closeNode();
    openNode();
    m_finished = false;
}

QString JsonWriter::toString()
{
    if (!m_finished) {
        closeNode();
        if (m_root)
            m_tree->encoder.endObject();
    }
    std::string_view text = m_tree->encoder.text();
    if (m_root) {
        // The buffer is the line "dat:json:{...}" with its line end: the value is what stands between.
        const size_t tag = text.find("json:");
        if (tag == text.npos) {
            throw std::bad_alloc(); // the encoder's text is empty: it had no room for all of it
        }
        text = text.substr(tag + 5, text.size() - tag - 6);
    }
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

int JsonWriter::length() const
{
    return int(m_tree->encoder.text().size());
}

bool JsonWriter::isReadOnly()
{
    if (m_finished) {
        // "JsonWriterobject" is one word: the text is searched for in logs as it always was.
        qCritical() << "JsonWriter::isReadOnly error: cannot addAttribute or addChild on a JsonWriterobject after "
                       "toString() has been called\n Name: "
                    << m_name << "\nType: " << int(m_type);
    }
    return m_finished;
}

} // namespace zel
