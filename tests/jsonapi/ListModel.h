// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Note.h"

#include <zel/LiveListBase.h>

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <utility>

/// What a list should hold and have announced after each message, worked out the slow way.
struct ListModel
{
    using Keys = zel::LiveListBase::Keys;

    Keys keys = Keys::AsTheyCome;
    QList<Note> items;
    QStringList announced;
    QList<Note> received;
    QByteArray transfer;

    int find(const QString& id) const
    {
        for (int i = int(items.size()) - 1; i >= 0; --i) {
            if (items.at(i).id == id)
                return i;
        }
        return -1;
    }

    static Note read(const QJsonValue& json, Note note = {})
    {
        const QJsonObject object = json.toObject();
        note.id = object.value(u"renamed"_s).toString(object.value(u"id"_s).toString(note.id));
        note.text = object.value(u"text"_s).toString(note.text);
        note.stars = object.value(u"stars"_s).toInt(note.stars);
        return note;
    }

    void apply(const QByteArray& name, const QJsonArray& elements, bool last)
    {
        if (name == "listAll" || name == "listElements") {
            transfer = name;
            received.clear();
        } else if (name != "listChunk") {
            for (const QJsonValue& element : elements)
                applyElement(name, element);
        } else if (!transfer.isEmpty()) {
            for (const QJsonValue& element : elements)
                received.append(read(element));
            if (last)
                finish(std::exchange(transfer, {}) == "listAll", std::exchange(received, {}));
        }
    }

    void finish(bool isWhole, const QList<Note>& arrived)
    {
        const QList<Note> before = items;
        if (isWhole)
            items.clear();
        for (const Note& note : arrived) {
            const int at = find(note.id);
            if (isWhole && (keys == Keys::AsTheyCome || (at < 0 && !note.id.isEmpty())))
                items.append(note);
            else if (!isWhole && at >= 0)
                update(at, note);
        }
        if (isWhole && items != before)
            announced.append(u"reset"_s);
    }

    void update(int at, const Note& note)
    {
        items[at] = note;
        announced.append(u"updated %1"_s.arg(at));
    }

    void applyElement(const QByteArray& name, const QJsonValue& element)
    {
        const bool isAdded = name == "listAdd";
        const int at = find(isAdded ? read(element).id : element[u"id"_s].toString());
        if (at < 0 && isAdded && !(keys == Keys::Distinct && read(element).id.isEmpty())) {
            announced.append(u"added %1"_s.arg(items.size()));
            items.append(read(element));
        } else if (at >= 0 && name == "listRemove") {
            announced.append(u"removed %1"_s.arg(at));
            items.removeAt(at);
        } else if (at >= 0 && (isAdded || name == "listChange")) {
            const Note note = read(element, isAdded ? Note() : items.at(at));
            if (!(note == items.at(at)))
                update(at, note);
        }
    }
};

/// An element of a message, sound for the most part.
template <class Random>
QJsonValue randomElement(Random& random)
{
    if (random.bounded(40) == 0)
        return 5; // no object at all
    QJsonObject element;
    if (random.bounded(20) > 0)
        element.insert(u"id"_s, QString::number(random.bounded(15)));
    if (random.bounded(5) == 0)
        element.insert(u"renamed"_s, QString::number(random.bounded(15)));
    if (random.bounded(2))
        element.insert(u"text"_s, QString::number(random.bounded(3)));
    if (random.bounded(3))
        element.insert(u"stars"_s, random.bounded(3));
    return element;
}
