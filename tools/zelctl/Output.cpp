// SPDX-License-Identifier: Apache-2.0
#include "Output.h"

#include <common/LineReader.h>
#include <common/Printable.h>

#include <QtCore/QStringList>

#include <algorithm>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace zelctl {

using zeltools::printable;

namespace {

bool wantsColour(std::FILE* out)
{
    return isatty(fileno(out)) && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

bool isWide(char32_t c)
{
    return (c >= 0x1100 && c <= 0x115f) || (c >= 0x2e80 && c <= 0xa4cf && c != 0x303f) ||
           (c >= 0xac00 && c <= 0xd7a3) || (c >= 0xf900 && c <= 0xfaff) || (c >= 0xfe30 && c <= 0xfe6f) ||
           (c >= 0xff00 && c <= 0xff60) || (c >= 0xffe0 && c <= 0xffe6) || (c >= 0x1f300 && c <= 0x1f64f) ||
           (c >= 0x1f680 && c <= 0x1f6ff) || (c >= 0x1f900 && c <= 0x1f9ff) || (c >= 0x20000 && c <= 0x3fffd);
}

QString padded(const QString& text, qsizetype columns)
{
    return text + QString(std::max<qsizetype>(0, columns - columnsOf(text)), u' ');
}

/// "displayPictureSize" as "display picture size".
QString spelled(const QString& name)
{
    QString text;
    for (const QChar c : name) {
        if (c.isUpper())
            text += u' ';
        text += c.toLower();
    }
    return text;
}

QString joined(const QStringList& cells, const QList<qsizetype>& widths)
{
    QString line;
    for (qsizetype i = 0; i < cells.size(); ++i)
        line += padded(cells.at(i), widths.at(i) + 2);
    while (line.endsWith(u' '))
        line.chop(1);
    return line;
}

} // namespace

Output::Output(Format format, std::FILE* out)
    : m_format(format)
    , m_out(out)
    , m_colour(format == Format::People && wantsColour(out))
{
}

void Output::ready(const Record& state)
{
    m_inShell = true;
    if (m_format == Format::JsonLines)
        line(toJson(Record().add(u"ready"_s, true).append(state)));
    else
        sentence(u"Ready, the registration state is %1. 'help' lists the commands."_s.arg(
            state.textOf(u"registrationState"_s)));
}

void Output::answer(const QString& command, const Record& record)
{
    if (m_format == Format::JsonLines) {
        line(toJson(Record().add(u"answer"_s, command).append(record)));
        return;
    }
    if (m_inShell)
        sentence(bold(command + u':'));
    values(record);
}

void Output::request(const QString& command, bool ok)
{
    if (m_format == Format::JsonLines)
        answer(command, Record().add(u"ok"_s, ok));
    else
        sentence((m_inShell ? command + u": "_s : QString()) + (ok ? u"ok"_s : u"refused"_s));
}

void Output::error(const QString& message)
{
    if (m_format == Format::JsonLines)
        line(toJson(Record().add(u"answer"_s, u"error"_s).add(u"message"_s, message)));
    else
        sentence(u"error: "_s + printable(message)); // what was typed is in it
}

void Output::signal(const Record& record)
{
    if (m_format == Format::JsonLines) {
        line(toJson(record));
        return;
    }
    QString text = bold(padded(record.textOf(u"source"_s), 14)) + u"  "_s;
    const QString name = record.textOf(u"signal"_s);
    text += record.members().size() > 2 ? padded(name, 24) : name;
    for (const Record::Member& member : record.members().mid(2)) {
        const QString value = toText(member.value);
        const bool quoted = member.value.metaType() == QMetaType::fromType<QString>();
        text += u"  "_s + member.name + u'=' + (quoted ? u'"' + printable(value) + u'"' : value);
    }
    sentence(text);
}

void Output::sentence(const QString& text)
{
    if (m_format == Format::People)
        line(text.toUtf8());
}

void Output::diagnostic(const QString& text) const
{
    zeltools::LineReader::makeRoom();
    std::fprintf(stderr, "zelctl: %s\n", printable(text).toUtf8().constData());
}

void Output::line(const QByteArray& bytes)
{
    zeltools::LineReader::makeRoom();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), m_out);
    std::fputc('\n', m_out);
    std::fflush(m_out);
}

void Output::values(const Record& record)
{
    qsizetype width = 0;
    for (const Record::Member& member : record.members()) {
        if (!member.value.canConvert<QList<Record>>())
            width = std::max(width, spelled(member.name).size());
    }
    for (const Record::Member& member : record.members()) {
        if (member.value.canConvert<QList<Record>>())
            table(member.value.value<QList<Record>>());
        else if (member.value.canConvert<Record>())
            values(member.value.value<Record>());
        else
            sentence(bold(padded(spelled(member.name), width)) + u"  "_s + printable(toText(member.value)));
    }
}

void Output::table(const QList<Record>& rows)
{
    if (rows.isEmpty())
        return;
    static const QStringList seldom{u"ppId"_s, u"applicationVersion"_s, u"platformVersion"_s, u"sdkVersion"_s,
                                    u"zelVersion"_s};
    QList<QStringList> lines(1 + rows.size());
    QList<qsizetype> widths;
    for (qsizetype i = 0; i < rows.size(); ++i) {
        for (const Record::Member& member : rows.at(i).members()) {
            if (!m_all && seldom.contains(member.name))
                continue;
            if (i == 0)
                lines.first() += spelled(member.name);
            lines[i + 1] += printable(toText(member.value));
        }
    }
    for (const QStringList& cells : lines) {
        widths.resize(cells.size());
        for (qsizetype i = 0; i < cells.size(); ++i)
            widths[i] = std::max(widths.at(i), columnsOf(cells.at(i)));
    }
    sentence(bold(joined(lines.first(), widths)));
    for (const QStringList& cells : lines.mid(1))
        sentence(joined(cells, widths));
}

QString Output::bold(const QString& text) const
{
    return m_colour ? u"\033[1m"_s + text + u"\033[0m"_s : text;
}

qsizetype columnsOf(const QString& text)
{
    qsizetype columns = 0;
    for (const char32_t c : text.toUcs4()) {
        const QChar::Category category = QChar::category(c);
        const bool none =
            category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing || category == QChar::Other_Format;
        columns += none ? 0 : isWide(c) ? 2 : 1;
    }
    return columns;
}

} // namespace zelctl
