// SPDX-License-Identifier: Apache-2.0
#include <zel/JsonWriter.h>

#include <pps/encoder.h>

#include <QDebug>

#include <cstring>

namespace zel {

namespace {

/// A string as UTF-8 for the length of one call; short ASCII, which is nearly everything, without an allocation.
class Utf8
{
public:
    explicit Utf8(const QString& text)
    {
        m_size = size_t(text.size());
        char16_t seen = 0;
        if (m_size <= sizeof(m_small)) {
            // Not utf16(), which copies a string that is no allocation of its own, such as a literal.
            const QChar* const units = text.constData();
            for (size_t i = 0; i < m_size; ++i) {
                seen |= units[i].unicode();
                m_small[i] = char(units[i].unicode());
            }
        }
        if (m_size > sizeof(m_small) || seen > 0x7f) {
            m_large = text.toUtf8();
            m_data = m_large.constData();
            m_size = size_t(m_large.size());
        }
    }
    Utf8(const Utf8&) = delete;
    Utf8& operator=(const Utf8&) = delete;

    const char* data() const { return m_data; }
    size_t size() const { return m_size; }

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

    const char* data() const { return m_named ? m_text.data() : nullptr; }
    size_t size() const { return m_named ? m_text.size() : 0; }

private:
    Utf8 m_text;
    bool m_named;
};

} // namespace

/// The buffer that all writers of a message share. It lives as long as the last of them.
struct JsonWriter::Tree
{
    Tree() { pps_encoder_initialize(&encoder, false); }
    ~Tree() { pps_encoder_cleanup(&encoder); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    void release()
    {
        if (--writers == 0) {
            delete this;
        }
    }

    pps_encoder_t encoder = {};
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
    pps_encoder_start_object(&m_tree->encoder, "dat");
    openNode();
}

JsonWriter::JsonWriter(const QString& name, AttributeType type, Tree* tree)
    : m_name(name)
    , m_type(type)
    , m_root(false)
    , m_tree(tree)
{
    ++m_tree->writers;
    openNode();
}

JsonWriter::~JsonWriter()
{
    // A child closes itself, without the text that toString() would build. A root that was never sent just goes.
    if (!m_root && !m_finished) {
        closeNode();
    }
    m_tree->release();
}

void JsonWriter::openNode()
{
    const Utf8 name(m_name);
    const char* const nameOrNone = m_name.isEmpty() ? nullptr : name.data();
    switch (m_type) {
    case Array: // named even when the name is empty, unlike the others
        pps_encoder_start_array_n(&m_tree->encoder, name.data(), name.size());
        break;
    case Object:
        pps_encoder_start_object_n(&m_tree->encoder, nameOrNone, name.size());
        break;
    case Null:
        pps_encoder_add_null_n(&m_tree->encoder, nameOrNone, name.size());
        break;
    }
}

void JsonWriter::closeNode()
{
    m_finished = true;
    if (m_type == Array) {
        pps_encoder_end_array(&m_tree->encoder);
    } else if (m_type == Object) {
        pps_encoder_end_object(&m_tree->encoder);
    }
}

void JsonWriter::addAttribute(const QString& name)
{
    if (!isReadOnly()) {
        const MemberName member(name, m_type);
        pps_encoder_add_null_n(&m_tree->encoder, member.data(), member.size());
    }
}

void JsonWriter::addAttribute(const QString& name, bool value)
{
    if (!isReadOnly()) {
        const MemberName member(name, m_type);
        pps_encoder_add_bool_n(&m_tree->encoder, member.data(), member.size(), value);
    }
}

void JsonWriter::addAttribute(const QString& name, const QString& value)
{
    if (!isReadOnly()) {
        const MemberName member(name, m_type);
        const Utf8 text(value);
        pps_encoder_add_string_n(&m_tree->encoder, member.data(), member.size(), text.data(), text.size());
    }
}

void JsonWriter::addAttribute(const QString& name, const char* value)
{
    addAttribute(name, QString::fromUtf8(value));
}

void JsonWriter::addAttribute(const QString& name, int value)
{
    if (!isReadOnly()) {
        const MemberName member(name, m_type);
        pps_encoder_add_int_n(&m_tree->encoder, member.data(), member.size(), value);
    }
}

QSharedPointer<JsonWriter> JsonWriter::addChild(const QString& name, AttributeType type)
{
    if (isReadOnly()) {
        return {};
    }
    return QSharedPointer<JsonWriter>::create(m_type == Array ? QString() : name, type, m_tree);
}

QString JsonWriter::toString()
{
    if (!m_finished) {
        closeNode();
        if (m_root) {
            pps_encoder_end_object(&m_tree->encoder);
        }
    }
    const char* const text = pps_encoder_buffer(&m_tree->encoder);
    const int size = length();
    if (!m_root) {
        return QString::fromUtf8(text, size);
    }
    // The buffer is the line "dat:json:{...}" with its line end: the value is what stands between.
    const char* const tag = std::strstr(text, "json");
    if (!tag) {
        return {};
    }
    const char* const value = tag + 5;
    return QString::fromUtf8(value, qMax<qsizetype>(0, text + size - 1 - value));
}

int JsonWriter::length() const
{
    return pps_encoder_length(&m_tree->encoder);
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
