// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/Words.h>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// What a backslash and \a c stand for within double quotes; any other pair stands as it is.
QString unescaped(QChar c)
{
    if (c == u'n')
        return u"\n"_s;
    if (c == u't')
        return u"\t"_s;
    return u"\"\\$`"_s.contains(c) ? QString(c) : QString(u'\\') + c;
}

} // namespace

std::optional<QStringList> splitWords(const QString& line, QString* error, QChar comment)
{
    const auto fail = [error](const QString& why) {
        *error = why;
        return std::nullopt;
    };
    QStringList words;
    bool inWord = false; // also in one that is empty so far, as in ""
    QChar quote;
    for (qsizetype at = 0; at < line.size(); ++at) {
        const QChar c = line.at(at);
        if (quote.isNull() && c.isSpace()) {
            inWord = false;
            continue;
        }
        if (!inWord && !comment.isNull() && c == comment)
            break;
        if (!inWord)
            words.append(QString());
        inWord = true;
        const bool last = at + 1 == line.size();
        if (c == u'\\' && quote.isNull() && last)
            return fail(u"the line ends in a backslash"_s);
        if (c == u'\\' && quote != u'\'' && !last)
            words.last() += quote.isNull() ? QString(line.at(++at)) : unescaped(line.at(++at));
        else if (c == quote)
            quote = QChar();
        else if (quote.isNull() && (c == u'"' || c == u'\''))
            quote = c;
        else
            words.last() += c;
    }
    if (!quote.isNull())
        return fail(u"a %1 is not closed"_s.arg(quote));
    return words;
}

} // namespace zelcore
