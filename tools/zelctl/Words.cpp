// SPDX-License-Identifier: Apache-2.0
#include "Words.h"

namespace zelctl {

namespace {

class Splitter
{
public:
    explicit Splitter(const QString& line)
        : m_line(line)
    {
    }

    bool run()
    {
        while (m_at < m_line.size()) {
            const QChar c = m_line.at(m_at++);
            if (c.isSpace())
                endWord();
            else if (c == u'\'' ? !literal() : c == u'"' ? !quoted() : c == u'\\' ? !escaped() : !plain(c))
                return false;
        }
        endWord();
        return true;
    }

    QStringList words;
    QString error;

private:
    bool plain(QChar c)
    {
        m_word += c;
        m_open = true;
        return true;
    }

    bool escaped()
    {
        if (m_at == m_line.size())
            return fail(QStringLiteral("the line ends in a backslash"));
        return plain(m_line.at(m_at++));
    }

    bool literal()
    {
        m_open = true;
        const qsizetype end = m_line.indexOf(u'\'', m_at);
        if (end < 0)
            return fail(QStringLiteral("a ' is not closed"));
        m_word += QStringView(m_line).mid(m_at, end - m_at);
        m_at = end + 1;
        return true;
    }

    bool quoted()
    {
        m_open = true;
        while (m_at < m_line.size()) {
            QChar c = m_line.at(m_at++);
            if (c == u'"')
                return true;
            if (c == u'\\' && m_at < m_line.size())
                m_word += unescape(m_line.at(m_at++));
            else
                m_word += c;
        }
        return fail(QStringLiteral("a \" is not closed"));
    }

    static QString unescape(QChar c)
    {
        if (c == u'n')
            return QStringLiteral("\n");
        if (c == u't')
            return QStringLiteral("\t");
        if (c == u'"' || c == u'\\' || c == u'$' || c == u'`')
            return c;
        return QString(u'\\') + c; // any other pair stands as it is
    }

    bool fail(const QString& sentence)
    {
        error = sentence;
        return false;
    }

    void endWord()
    {
        if (m_open)
            words += m_word;
        m_word.clear();
        m_open = false;
    }

    const QString& m_line;
    qsizetype m_at = 0;
    QString m_word;
    bool m_open = false; // also true for a word that is empty so far, as in ""
};

} // namespace

std::optional<QStringList> splitWords(const QString& line, QString* error)
{
    Splitter splitter(line);
    if (splitter.run())
        return splitter.words;
    if (error)
        *error = splitter.error;
    return std::nullopt;
}

} // namespace zelctl
