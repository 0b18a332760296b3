// SPDX-License-Identifier: Apache-2.0
#include <simulator/world/PersonJson.h>

#include <QtCore/QJsonValue>

#include <array>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// One member of a person: its name on the wire, its name in the command language, and where it is kept (exactly
/// one of the three).
struct Field
{
    const char16_t* key;
    const char16_t* name;
    QString Person::*text = nullptr;
    int Person::*number = nullptr;
    bool Person::*flag = nullptr;

    QString wireName() const { return QString::fromUtf16(key); }
    QString commandName() const { return QString::fromUtf16(name); }
};

// The names on the wire follow no rule ("currentStatus", "TimeZone", "ppid"); applications depend on each of them.
constexpr std::array<Field, 14> fields{{
    {u"userId", u"userId", &Person::userId},
    {u"handle", u"handle", &Person::handle},
    {u"ppid", u"ppId", &Person::ppId},
    {u"appVersion", u"appVersion", &Person::appVersion},
    {u"displayName", u"displayName", &Person::displayName},
    {u"personalMessage", u"personalMessage", &Person::personalMessage},
    {u"currentStatus", u"statusMessage", &Person::statusMessage},
    {u"avatarId", u"avatarId", &Person::avatarId},
    {u"avatarMimeType", u"avatarMimeType", &Person::avatarMimeType},
    {u"TimeZone", u"timeZone", &Person::timeZone},
    {u"CountryCode", u"countryCode", &Person::countryCode},
    {u"platformVersion", u"platformVersion", nullptr, &Person::platformVersion},
    {u"showBusy", u"showBusy", nullptr, nullptr, &Person::showBusy},
    {u"clientVersion", u"clientVersion", nullptr, &Person::clientVersion},
}};

QJsonValue valueOf(const Field& field, const Person& person)
{
    if (field.text)
        return person.*field.text;
    if (field.number)
        return person.*field.number;
    return person.*field.flag;
}

/// False when the value is of another type than the field.
bool take(const Field& field, const QJsonValue& value, Person& person)
{
    if (field.text && value.isString())
        person.*field.text = value.toString();
    else if (field.number && value.isDouble())
        person.*field.number = value.toInt(person.*field.number);
    else if (field.flag && value.isBool())
        person.*field.flag = value.toBool();
    else
        return false;
    return true;
}

bool takeText(const Field& field, const QString& value, Person& person)
{
    if (field.text)
        return take(field, value, person);
    if (field.number) {
        bool isNumber = false;
        const int number = value.toInt(&isNumber);
        return isNumber && take(field, number, person);
    }
    const bool on = value == "on"_L1 || value == "true"_L1;
    const bool off = value == "off"_L1 || value == "false"_L1;
    return (on || off) && take(field, on, person);
}

} // namespace

QJsonObject personToJson(const Person& person)
{
    QJsonObject json;
    for (const Field& field : fields)
        json.insert(field.wireName(), valueOf(field, person));
    return json;
}

QJsonObject personDifference(const Person& before, const Person& after)
{
    QJsonObject json;
    for (const Field& field : fields) {
        const QJsonValue value = valueOf(field, after);
        if (value != valueOf(field, before))
            json.insert(field.wireName(), value);
    }
    return json;
}

QString mergePerson(const QJsonObject& change, Person& person)
{
    Person merged = person;
    for (const Field& field : fields) {
        const auto member = change.constFind(field.wireName());
        if (member != change.constEnd() && !take(field, *member, merged))
            return u"\"%1\" is of the wrong type"_s.arg(field.wireName());
    }
    person = merged;
    return {};
}

QString setPersonField(const QString& name, const QString& value, Person& person)
{
    for (const Field& field : fields) {
        if (field.commandName().compare(name, Qt::CaseInsensitive) != 0)
            continue;
        return takeText(field, value, person)
                   ? QString()
                   : u"%1 takes %2, not \"%3\""_s.arg(field.commandName(),
                                                      field.number ? u"a number"_s : u"on or off"_s, value);
    }
    return u"no field \"%1\"; there are: %2"_s.arg(name, personFieldNames().join(", "_L1));
}

QStringList personFieldNames()
{
    QStringList names;
    for (const Field& field : fields)
        names.append(field.commandName());
    return names;
}

QList<QStringList> describePerson(const Person& person)
{
    QList<QStringList> rows;
    for (const Field& field : fields) {
        const QString value = valueOf(field, person).toVariant().toString();
        if (!value.isEmpty())
            rows.append({field.commandName(), value});
    }
    return rows;
}

} // namespace zelcore
