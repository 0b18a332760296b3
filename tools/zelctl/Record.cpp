// SPDX-License-Identifier: Apache-2.0
#include "Record.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QMetaEnum>

using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

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

QByteArray toJson(const QVariant& value)
{
    if (value.canConvert<Record>())
        return toJson(value.value<Record>());
    if (value.canConvert<QList<Record>>()) {
        QByteArrayList texts;
        for (const Record& record : value.value<QList<Record>>())
            texts += toJson(record);
        return '[' + texts.join(',') + ']';
    }
    const bool isText = value.metaType() == QMetaType::fromType<QString>();
    const QJsonValue json = isText ? withoutLoneSurrogates(value.toString()) : QJsonValue::fromVariant(value);
    const QByteArray array = QJsonDocument(QJsonArray{json}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

} // namespace

Record& Record::add(const QString& name, const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QByteArray>()) {
        const QByteArray data = value.toByteArray();
        const QByteArray hash = QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
        add(name + "Size"_L1, int(data.size()));
        return add(name + "Sha1"_L1, QString::fromLatin1(hash));
    }
    const bool isEnumerator = value.metaType().flags() & QMetaType::IsEnumeration;
    m_members.append({name, isEnumerator ? QVariant(nameOf(value)) : value});
    return *this;
}

Record& Record::append(const Record& other)
{
    m_members.append(other.m_members);
    return *this;
}

QString Record::textOf(const QString& name) const
{
    for (const Member& member : m_members) {
        if (member.name == name)
            return toText(member.value);
    }
    return {};
}

QString nameOf(const QVariant& enumerator)
{
    const int value = enumerator.toInt();
    const QMetaObject* scope = enumerator.metaType().metaObject();
    const QByteArray type(enumerator.metaType().name());
    const int index = scope ? scope->indexOfEnumerator(type.mid(type.lastIndexOf(':') + 1).constData()) : -1;
    const char* name = index < 0 ? nullptr : scope->enumerator(index).valueToKey(value);
    return name ? QString::fromLatin1(name) : QString::number(value);
}

QString toText(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<bool>())
        return value.toBool() ? u"yes"_s : u"no"_s;
    if (value.metaType() == QMetaType::fromType<QVariantList>())
        return value.toStringList().join(", "_L1);
    return value.toString();
}

QByteArray toJson(const Record& record)
{
    QByteArrayList members;
    for (const Record::Member& member : record.members())
        members += '"' + member.name.toLatin1() + "\":" + toJson(member.value);
    return '{' + members.join(',') + '}';
}

} // namespace zelctl
