// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/MemberReader.h>

#include <QtCore/QByteArrayView>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QSet>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// Members that can mean something have shorter names. What stands deep within long ones is found by their beginnings:
/// all their names in full would take the square of what the text does.
constexpr qsizetype longestName = 200;

/// Walks through a text that has been parsed before, so that nothing in it surprises.
class LineFinder
{
public:
    explicit LineFinder(const QByteArray& json)
        : m_json(json)
    {
        value(QString());
    }

    QHash<QString, int> lines;
    QString twice; ///< The first member that stands twice in its object, if one does.

private:
    char next()
    {
        for (; m_at < m_json.size() && QByteArrayView(" \t\r\n,:").contains(m_json.at(m_at)); ++m_at)
            m_line += m_json.at(m_at) == '\n';
        return m_at < m_json.size() ? m_json.at(m_at) : ' ';
    }

    /// With its quotes.
    QByteArray string()
    {
        const qsizetype start = m_at++;
        for (; m_at < m_json.size() && m_json.at(m_at) != '"'; ++m_at)
            m_at += m_json.at(m_at) == '\\';
        ++m_at;
        return m_json.mid(start, m_at - start);
    }

    void value(const QString& name)
    {
        const char first = next();
        if (!lines.contains(name))
            lines.insert(name, m_line);
        if (first == '"')
            string();
        else if (first == '{' || first == '[')
            elements(name, first == '{');
        else
            while (m_at < m_json.size() && !QByteArrayView(" \t\r\n,]}").contains(m_json.at(m_at)))
                ++m_at;
    }

    void elements(const QString& name, bool isObject)
    {
        ++m_at;
        QSet<QString> keys;
        for (int i = 0; next() != (isObject ? '}' : ']') && m_at < m_json.size(); ++i) {
            if (!isObject) {
                value(u"%1[%2]"_s.arg(name, QString::number(i)).left(longestName));
                continue;
            }
            const int line = m_line;
            const QString key = QJsonDocument::fromJson('[' + string() + ']').array().first().toString();
            const QString place = (name.isEmpty() ? key : name + u'.' + key).left(longestName);
            if (keys.contains(key) && twice.isEmpty())
                twice = place;
            keys.insert(key);
            lines.insert(place, line);
            value(place);
        }
        ++m_at;
    }

    const QByteArray& m_json;
    qsizetype m_at = 0;
    int m_line = 1;
};

} // namespace

MemberLines::MemberLines(const QByteArray& json)
{
    const LineFinder finder(json);
    m_lines = finder.lines;
    m_twice = finder.twice;
}

int MemberLines::of(const QString& member) const
{
    return m_lines.value(member.left(longestName), 1);
}

QString MemberReader::word(const QString& key, const QString& preset)
{
    const QJsonValue value = m_object.take(key);
    if (value.isUndefined())
        return preset;
    if (value.isBool())
        return value.toBool() ? u"on"_s : u"off"_s;
    if (!value.isString() && !value.isDouble())
        complain(key, u"is no text, no number, and neither true nor false"_s);
    return value.toVariant().toString();
}

QString MemberReader::text(const QString& key)
{
    const QJsonValue value = m_object.take(key);
    if (!value.isString())
        complain(key, value.isUndefined() ? u"is missing"_s : u"is no text"_s);
    return value.toString();
}

qint64 MemberReader::number(const QString& key, qint64 least, qint64 most)
{
    const QJsonValue value = m_object.take(key);
    const qint64 number = value.toInteger(least - 1);
    if (number < least || number > most)
        complain(key,
                 value.isUndefined() ? u"is missing"_s : u"is no whole number from %1 to %2"_s.arg(least).arg(most));
    return number;
}

QStringList MemberReader::fields()
{
    QStringList fields;
    for (const QString& key : keys())
        fields.append(key + u'=' + word(key));
    return fields;
}

void MemberReader::object(const QString& key, const Visit& visit)
{
    if (has(key))
        read(m_object.take(key), placeOf(key), visit);
}

void MemberReader::each(const QString& key, const Visit& visit)
{
    const QJsonValue value = m_object.take(key);
    if (!value.isUndefined() && !value.isArray())
        complain(key, u"is no array"_s);
    const QJsonArray array = value.toArray();
    for (qsizetype i = 0; i < array.size(); ++i)
        read(array.at(i), u"%1[%2]"_s.arg(placeOf(key), QString::number(i)), visit);
}

void MemberReader::read(const QJsonValue& value, const QString& place, const Visit& visit) const
{
    MemberReader reader(value.toObject(), place, m_problem);
    if (!value.isObject())
        reader.complain(QString(), u"is no object"_s);
    visit(reader);
    reader.end();
}

void MemberReader::end()
{
    if (!m_object.isEmpty())
        complain(m_object.begin().key(), u"means nothing here"_s);
}

void MemberReader::complain(const QString& key, const QString& what)
{
    if (m_problem->what.isEmpty())
        *m_problem = {key.isEmpty() ? m_place : placeOf(key), what};
}

} // namespace zelcore
