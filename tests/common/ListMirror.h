// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableList.h>
#include <iface/ObservableListImpl.h>

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <utility>

/// Follows a list by its announcements alone, the way a view would, and complains when they do not add up.
///
/// After a wholesale change it reads the list again, but for what the mapper says where items went. `announced` keeps
/// what was heard, in words. Attach it before any handler that edits the list.
template <class T>
class ListMirror
{
    using List = iface::ObservableListImpl;

public:
    explicit ListMirror(const iface::ObservableList<T>& list)
        : m_list(list)
        , items(list.toList())
    {
        QObject::connect(list.impl(), &List::itemAdded, &m_context,
                         [this](const QVariantList& path) { added(List::indexOfPath(path)); });
        QObject::connect(list.impl(), &List::itemUpdated, &m_context,
                         [this](const QVariantList& path) { updated(List::indexOfPath(path)); });
        QObject::connect(list.impl(), &List::itemRemoved, &m_context,
                         [this](const QVariantList& path) { removed(List::indexOfPath(path)); });
        QObject::connect(list.impl(), &List::itemsChanged, &m_context,
                         [this](List::ChangeType::Type type, const QSharedPointer<List::IndexMapper>& mapper) {
                             changed(type, mapper.data());
                         });
        QObject::connect(list.impl(), &List::observableChanged, &m_context, [this] { ++plainChanges; });
    }

    /// What was heard since the last call.
    QStringList take() { return std::exchange(announced, {}); }

    /// Where a mapper says that each of `count` items went, -1 for those gone.
    static QList<int> indexesOf(const List::IndexMapper& mapper, int count)
    {
        QList<int> indexes;
        for (int i = 0; i < count; ++i) {
            QVariantList path;
            int gone = 0;
            const bool isThere = mapper.newIndexPath(&path, &gone, List::pathOf(i));
            indexes.append(isThere ? List::indexOfPath(path) : -1);
            if (isThere != (gone == 0))
                indexes.append(-1000); // says both
        }
        return indexes;
    }

    static QString inWords(List::ChangeType::Type type, const QList<int>& indexes)
    {
        if (type != List::ChangeType::IndexesChanged)
            return type == List::ChangeType::Reset ? QStringLiteral("reset") : QStringLiteral("data changed");
        QStringList numbers;
        for (const int index : indexes)
            numbers.append(QString::number(index));
        return QStringLiteral("moved ") + numbers.join(QLatin1Char(' '));
    }

private:
    const iface::ObservableList<T> m_list;
    QObject m_context;

public:
    QList<T> items;
    QStringList announced;
    int plainChanges = 0;
    QString complaint; ///< the first thing that did not add up

private:
    void check(bool holds, const QString& what)
    {
        if (!holds && complaint.isEmpty())
            complaint = what;
    }

    void compare(const QString& announcement)
    {
        announced.append(announcement);
        const QList<T> now = m_list.toList();
        // Not by the lists' own operator, which passes null pointers to memcmp() when they are empty.
        check(std::equal(items.begin(), items.end(), now.begin(), now.end()),
              QStringLiteral("the list is another than announced: ") + announcement);
    }

    void added(int index)
    {
        check(index >= 0 && index <= items.size(), QStringLiteral("added where nothing can be"));
        items.insert(qBound(0, index, int(items.size())), m_list[index]);
        compare(QStringLiteral("added %1").arg(index));
    }

    void updated(int index)
    {
        check(index >= 0 && index < items.size(), QStringLiteral("updated what is not there"));
        if (index >= 0 && index < items.size())
            items[index] = m_list[index];
        compare(QStringLiteral("updated %1").arg(index));
    }

    void removed(int index)
    {
        check(index >= 0 && index < items.size(), QStringLiteral("removed what is not there"));
        if (index >= 0 && index < items.size())
            items.removeAt(index);
        compare(QStringLiteral("removed %1").arg(index));
    }

    void changed(List::ChangeType::Type type, const List::IndexMapper* mapper)
    {
        QList<T> now = m_list.toList();
        QList<int> indexes;
        if (type == List::ChangeType::IndexesChanged && mapper) {
            indexes = indexesOf(*mapper, int(items.size()));
            for (int i = 0; i < items.size(); ++i) {
                const int to = indexes.at(i);
                check(to < now.size() && indexes.count(to) == (to < 0 ? indexes.count(-1) : 1),
                      QStringLiteral("items moved to where nothing is, or to one place"));
                check(to < 0 || to >= now.size() || now.at(to) == items.at(i),
                      QStringLiteral("another item stands where one moved to"));
            }
        }
        items.swap(now);
        compare(inWords(type, indexes));
    }
};
