// SPDX-License-Identifier: Apache-2.0
#include "Record.h"

#include <QtCore/QCryptographicHash>

#include <algorithm>

namespace zelctl {

namespace {

void appendEscaped(QByteArray& out, char16_t c)
{
    switch (c) {
    case u'"':
        out += "\\\"";
        break;
    case u'\\':
        out += "\\\\";
        break;
    case u'\n':
        out += "\\n";
        break;
    case u'\r':
        out += "\\r";
        break;
    case u'\t':
        out += "\\t";
        break;
    default:
        out += "\\u" + QByteArray::number(c, 16).rightJustified(4, '0');
    }
}

/// Qt's own conversion of a lone surrogate has changed between releases, so they are replaced before it sees them.
QString withoutLoneSurrogates(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate())
            continue;
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

void appendJson(QByteArray& out, const QString& text)
{
    const QByteArray utf8 = withoutLoneSurrogates(text).toUtf8();
    out += '"';
    for (const char c : utf8) {
        // Line separators of any kind are left as they are: only "\n" ends a line of JSON Lines.
        if (static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\' || c == 0x7f)
            appendEscaped(out, static_cast<char16_t>(c));
        else
            out += c;
    }
    out += '"';
}

void appendJson(QByteArray& out, const Record& record);

void appendJson(QByteArray& out, const QList<Record>& list)
{
    out += '[';
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (i > 0)
            out += ',';
        appendJson(out, list.at(i));
    }
    out += ']';
}

struct JsonValue
{
    QByteArray& out;

    void operator()(bool value) const { out += value ? "true" : "false"; }
    void operator()(qint64 value) const { out += QByteArray::number(value); }
    void operator()(const QString& value) const { appendJson(out, value); }
    void operator()(const QList<Record>& value) const { appendJson(out, value); }
    void operator()(const std::shared_ptr<const Record>& value) const { appendJson(out, *value); }
};

void appendJson(QByteArray& out, const Record& record)
{
    out += '{';
    bool first = true;
    for (const Member& member : record.members()) {
        if (!first)
            out += ',';
        first = false;
        appendJson(out, QString(member.name));
        out += ':';
        std::visit(JsonValue{out}, member.value);
    }
    out += '}';
}

} // namespace

Record& Record::flag(QLatin1String name, bool value)
{
    m_members.push_back({name, value});
    return *this;
}

Record& Record::number(QLatin1String name, qint64 value)
{
    m_members.push_back({name, value});
    return *this;
}

Record& Record::text(QLatin1String name, const QString& value)
{
    m_members.push_back({name, value});
    return *this;
}

Record& Record::record(QLatin1String name, const Record& value)
{
    m_members.push_back({name, std::make_shared<const Record>(value)});
    return *this;
}

Record& Record::list(QLatin1String name, const QList<Record>& value)
{
    m_members.push_back({name, value});
    return *this;
}

Record& Record::bytes(QLatin1String sizeName, QLatin1String sha1Name, const QByteArray& data)
{
    number(sizeName, data.size());
    const QByteArray hash = QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
    return text(sha1Name, QString::fromLatin1(hash));
}

Record& Record::append(const Record& other)
{
    m_members.insert(m_members.end(), other.m_members.begin(), other.m_members.end());
    return *this;
}

const Member* Record::find(QLatin1String name) const
{
    const auto found =
        std::find_if(m_members.begin(), m_members.end(), [name](const Member& member) { return member.name == name; });
    return found == m_members.end() ? nullptr : &*found;
}

QString Record::textOf(QLatin1String name) const
{
    const Member* member = find(name);
    return member ? toText(*member) : QString();
}

QString toText(const Member& member)
{
    if (const auto* text = std::get_if<QString>(&member.value))
        return *text;
    if (const auto* number = std::get_if<qint64>(&member.value))
        return QString::number(*number);
    if (const auto* flag = std::get_if<bool>(&member.value))
        return *flag ? QStringLiteral("yes") : QStringLiteral("no");
    return {};
}

QByteArray toJson(const Record& record)
{
    QByteArray out;
    appendJson(out, record);
    return out;
}

} // namespace zelctl
