// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/MemberReader.h>

#include <QtCore/QJsonArray>

using namespace Qt::StringLiterals;

namespace zelcore {

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

qint64 MemberReader::number(const QString& key, qint64 least)
{
    const QJsonValue value = m_object.take(key);
    const qint64 number = value.toInteger(least - 1);
    if (number < least)
        complain(key, value.isUndefined() ? u"is missing"_s : u"is no whole number from %1"_s.arg(least));
    return number;
}

QStringList MemberReader::fields()
{
    QStringList fields;
    for (const QString& key : keys())
        fields.append(key + u'=' + word(key));
    return fields;
}

MemberReader MemberReader::object(const QString& key)
{
    const QJsonValue value = m_object.take(key);
    if (!value.isUndefined() && !value.isObject())
        complain(key, u"is no object"_s);
    return {value.toObject(), placeOf(key), m_problem};
}

void MemberReader::each(const QString& key, const std::function<void(MemberReader&)>& visit)
{
    const QJsonValue value = m_object.take(key);
    if (!value.isUndefined() && !value.isArray())
        complain(key, u"is no array"_s);
    const QJsonArray array = value.toArray();
    for (qsizetype i = 0; i < array.size(); ++i) {
        MemberReader element(array.at(i).toObject(), u"%1[%2]"_s.arg(placeOf(key)).arg(i), m_problem);
        if (!array.at(i).isObject())
            element.complain(QString(), u"is no object"_s);
        visit(element);
        element.end();
    }
}

void MemberReader::end()
{
    if (!m_object.isEmpty())
        complain(m_object.begin().key(), u"means nothing here"_s);
}

void MemberReader::complain(const QString& key, const QString& what)
{
    if (m_problem->isEmpty())
        *m_problem = u"%1 %2"_s.arg(key.isEmpty() ? m_place : placeOf(key), what);
}

} // namespace zelcore
