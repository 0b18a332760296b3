// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonAdapter.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <vector>

using namespace Qt::StringLiterals;

/// A record for the tests of live containers.
struct Note
{
    QString id;
    QString text;
    int stars = 0;
    std::vector<char> body{0}; // so that a copy takes memory

    bool operator==(const Note& other) const { return id == other.id && text == other.text && stars == other.stars; }
};
Q_DECLARE_METATYPE(Note)
Q_DECLARE_TYPEINFO(Note, Q_RELOCATABLE_TYPE);

/// Counts the keys that are taken from elements, which is what rebuilding an index would be seen by. Elements may say
/// that they have another key from now on. Nothing here writes them.
struct NoteAdapter : zel::JsonAdapter<Note>
{
    Note jsonToElement(iface::JsonObjectReader json, const Note& base) override
    {
        Note note = base;
        json.readFields("id", note.id, "text", note.text, "stars", note.stars, "renamed", note.id);
        return note;
    }
    void elementToJson(const Note&, const QSharedPointer<zel::JsonWriter>&) override {}
    QString elementToId(const Note& note) override
    {
        ++keysTaken;
        return note.id;
    }
    QString idJsonToId(iface::JsonObjectReader json) override
    {
        QString id;
        json.readString("id", id);
        return id;
    }
    void idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer) override
    {
        writer->addAttribute(QStringLiteral("id"), id);
    }

    int keysTaken = 0;
};

inline QJsonObject noteJson(const QString& id, const QString& text)
{
    return {{QStringLiteral("id"), id}, {QStringLiteral("text"), text}};
}

/// A list message with an empty id; further members of the body go into @p more.
inline QByteArray listMessage(const char* name, const QJsonArray& elements, QJsonObject more = {},
                              const QString& type = QStringLiteral("notes"))
{
    more.insert(QStringLiteral("type"), type);
    more.insert(QStringLiteral("id"), QString());
    more.insert(QStringLiteral("elements"), elements);
    return QJsonDocument(QJsonObject{{QString::fromLatin1(name), more}}).toJson(QJsonDocument::Compact);
}
