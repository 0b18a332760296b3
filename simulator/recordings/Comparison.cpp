// SPDX-License-Identifier: Apache-2.0
#include <simulator/recordings/Comparison.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QSet>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

QString shown(const QJsonValue& value)
{
    if (value.isUndefined())
        return u"not there"_s;
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return shortened(QString::fromUtf8(json.mid(1, json.size() - 2)), 60);
}

class Walk
{
public:
    Walk(bool anonymous, Comparison* result)
        : m_anonymous(anonymous)
        , m_result(result)
    {
    }

    void compare(const QJsonValue& then, const QJsonValue& now, const TextPlace& place, const QString& path)
    {
        if (then.isObject() && now.isObject())
            compareMembers(then.toObject(), now.toObject(), place, path);
        else if (then.isArray() && now.isArray())
            compareElements(then.toArray(), now.toArray(), place, path);
        else if (!(then.isString() && now.isString() && isPair(then.toString(), now.toString(), place)) && then != now)
            m_result->differences.append(u"\"%1\" was %2, is %3"_s.arg(path, shown(then), shown(now)));
    }

private:
    void compareMembers(const QJsonObject& then, const QJsonObject& now, const TextPlace& place, const QString& path)
    {
        QStringList keys = then.keys() + now.keys();
        keys.removeDuplicates();
        for (const QString& key : std::as_const(keys))
            compare(then.value(key), now.value(key), {place.type, key, place.depth + 1},
                    path.isEmpty() ? key : path + u'.' + key);
    }

    void compareElements(const QJsonArray& then, const QJsonArray& now, const TextPlace& place, const QString& path)
    {
        if (then.size() != now.size())
            m_result->differences.append(u"\"%1\" had %2 elements, has %3"_s.arg(path, QString::number(then.size()),
                                                                                 QString::number(now.size())));
        for (qsizetype i = 0; i < qMin(then.size(), now.size()); ++i)
            compare(then.at(i), now.at(i), {place.type, place.member, place.depth + 1},
                    u"%1[%2]"_s.arg(path, QString::number(i)));
    }

    /// Whether the two may differ, and do so only as they may.
    bool isPair(const QString& then, const QString& now, const TextPlace& place)
    {
        const Meaning meaning = meaningOf(place, then);
        const bool isSubstitute = m_anonymous && meaning != Meaning::Protocol;
        if ((isSteady(meaning) && !isSubstitute) || then.isEmpty() != now.isEmpty())
            return false;
        if (meaning != Meaning::Bytes)
            m_result->pairs.append({meaning, then, now});
        return true;
    }

    const bool m_anonymous;
    Comparison* const m_result;
};

} // namespace

Comparison Comparison::of(const QByteArray& then, const QByteArray& now, bool isInvocation, bool anonymous)
{
    Comparison result;
    const std::optional<Content> before = contentOf(then, isInvocation);
    const std::optional<Content> after = contentOf(now, isInvocation);
    if (!before || !after) {
        // What nobody can read is black in an anonymous recording.
        result.sameType = !before && !after;
        if (result.sameType && then != now && !anonymous)
            result.differences.append(u"other bytes"_s);
        return result;
    }
    result.sameType = before->type == after->type;
    Walk(anonymous, &result).compare(before->body, after->body, {before->type, QString(), 0}, QString());
    return result;
}

} // namespace zelcore
