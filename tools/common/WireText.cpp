// SPDX-License-Identifier: Apache-2.0
#include <common/WireText.h>

#include <common/Printable.h>

#include <QtCore/QByteArrayView>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

constexpr qsizetype longestText = 200;
constexpr qsizetype shownOfLongText = 60;
constexpr qsizetype deepestShown = 40;

/// The JSON text; all of a record in which none is announced.
QByteArrayView bodyOf(const QByteArray& record)
{
    static constexpr QByteArrayView announcement = "dat:json:";
    const qsizetype found = record.indexOf(announcement);
    const QByteArrayView body = QByteArrayView(record).sliced(found == -1 ? 0 : found + announcement.size());
    return body.endsWith('\n') ? body.chopped(1) : body;
}

/// The place of the quote that ends the text whose first one is at \a begin; the end of what is cut before it.
qsizetype endOfText(const QString& json, qsizetype begin)
{
    qsizetype end = begin + 1;
    while (end < json.size() && json.at(end) != u'"')
        end += json.at(end) == u'\\' ? 2 : 1;
    return qMin(end, json.size());
}

QString withShortTexts(const QString& json)
{
    QString result;
    qsizetype taken = 0;
    for (qsizetype begin = json.indexOf(u'"'); begin != -1;) {
        const qsizetype end = endOfText(json, begin);
        const qsizetype length = end - begin - 1;
        if (length > longestText) {
            result += QStringView(json).sliced(taken, begin + shownOfLongText - taken);
            result += u"…\" (%1 characters)"_s.arg(length);
            taken = qMin(end + 1, json.size());
        }
        begin = json.indexOf(u'"', end + 1);
    }
    result += QStringView(json).sliced(taken);
    return result;
}

/// Writes JSON text anew, a character after the other.
class Indenter
{
public:
    QString indented(const QString& json)
    {
        for (qsizetype at = 0; at < json.size(); ++at)
            at = json.at(at) == u'"' ? takeText(json, at) : takeSign(json, at);
        return m_text;
    }

private:
    /// A string, quotes included. The place of its last character.
    qsizetype takeText(const QString& json, qsizetype begin)
    {
        const qsizetype end = endOfText(json, begin);
        m_text += QStringView(json).sliced(begin, qMin(end + 1, json.size()) - begin);
        return end;
    }

    qsizetype takeSign(const QString& json, qsizetype at)
    {
        const QChar sign = json.at(at);
        const bool isEmptyPair = at + 1 < json.size() && ((sign == u'{' && json.at(at + 1) == u'}') ||
                                                          (sign == u'[' && json.at(at + 1) == u']'));
        if (isEmptyPair) {
            m_text += QStringView(json).sliced(at, 2);
            return at + 1;
        }
        const bool isEnd = sign == u'}' || sign == u']';
        if (isEnd)
            breakLine(-1);
        m_text += sign;
        if (sign == u'{' || sign == u'[')
            breakLine(1);
        else if (sign == u',')
            breakLine(0);
        else if (sign == u':')
            m_text += u' ';
        return at;
    }

    void breakLine(qsizetype deeper)
    {
        m_depth = qMax(qsizetype(0), m_depth + deeper);
        m_text += u'\n' + QString(2 * qMin(m_depth, deepestShown), u' ');
    }

    QString m_text;
    qsizetype m_depth = 0;
};

} // namespace

QString typeOf(const zelcore::WireRecord& record)
{
    if (!record.target.isEmpty())
        return u"invocation"_s;
    const QByteArrayView body = bodyOf(record.bytes);
    const qsizetype begin = body.indexOf('"') + 1;
    const qsizetype end = body.indexOf('"', begin);
    const bool isMessage = end > begin && end - begin <= 64 && body.startsWith('{');
    return isMessage ? QString::fromUtf8(body.sliced(begin, end - begin)) : u"not a message"_s;
}

QString summaryOf(const zelcore::WireRecord& record, qsizetype length)
{
    QByteArrayView body = bodyOf(record.bytes);
    if (record.target.isEmpty() && body.startsWith("{\"")) { // the type stands beside it
        const qsizetype colon = body.indexOf("\":");
        body = body.sliced(colon == -1 ? 0 : colon + 2);
        body = body.endsWith('}') && colon != -1 ? body.chopped(1) : body;
    }
    const QString text = withShortTexts(QString::fromUtf8(body));
    return text.size() > length ? printable(text.left(length)) + u'…' : printable(text);
}

QString prettyOf(const zelcore::WireRecord& record)
{
    return Indenter().indented(withShortTexts(QString::fromUtf8(bodyOf(record.bytes))));
}

} // namespace zeltools
