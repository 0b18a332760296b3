// SPDX-License-Identifier: Apache-2.0
#include <common/Printable.h>

#include <QtCore/QStringList>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

/// What changes the direction of everything behind it, up to the end of the line and beyond.
bool turnsDirection(char32_t c)
{
    return (c >= 0x202a && c <= 0x202e) || (c >= 0x2066 && c <= 0x2069);
}

} // namespace

QString printable(const QString& text)
{
    QString result;
    for (const char32_t c : text.toUcs4()) {
        if (c == U'\n')
            result += u"\\n"_s;
        else if (c < 0x20 || (c >= 0x7f && c < 0xa0) || c == 0x2028 || c == 0x2029 || turnsDirection(c))
            result += u"\\u%1"_s.arg(static_cast<uint>(c), 4, 16, QChar(u'0'));
        else
            result += QString::fromUcs4(&c, 1);
    }
    return result;
}

QString printableLines(const QString& text)
{
    QStringList lines = text.split(u'\n');
    for (QString& line : lines)
        line = printable(line);
    return lines.join(u'\n');
}

} // namespace zeltools
