// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableList.h>
#include <iface/ObservableListImpl.h>

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <algorithm>
#include <utility>

namespace iface {

/// The oracle for whoever writes a list: follows it by its announcements alone, the way a view would, and complains
/// when they do not add up.
///
/// Every announcement is replayed into `items`, which then has to be what the list answers. After a wholesale change
/// the list is read again; but where a mapper says that items went, they have to stand, and to be what they were. What
/// the list announced between two looks shows in words: "added 3", "moved 0 -1 1" (where each old item went), "reset".
/// An item that throws when it is read counts as a default-made one.
///
///     iface::ListMirror<int> mirror(list);
///     ... whatever changes the list ...
///     QCOMPARE(mirror.complaint(), QString());
///     QCOMPARE(mirror.take(), QStringList{"added 0"});
///
/// It keeps the list alive. Attach it before any handler that changes the list: a mirror, like any view by index, has
/// to hear of a change before the next one is made. One thread, that of the list. It is for tests: every announcement
/// takes it time with the length of the list, and one with a mapper with the square of that.
template <class T>
class ListMirror
{
    using List = ObservableListImpl;

public:
    explicit ListMirror(const ObservableList<T>& list)
        : m_list(list)
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
        QObject::connect(list.impl(), &List::observableChanged, &m_context, [this] { changedSomehow(); });
        m_items = readAll();
    }

    /// What the list holds, as far as it was announced.
    const QList<T>& items() const { return m_items; }
    /// The first thing that did not add up; empty if everything does.
    const QString& complaint() const { return m_complaint; }
    /// What was announced since the last call, in words.
    QStringList take() { return std::exchange(m_announced, {}); }
    /// How often plain observers heard.
    int plainChanges() const { return m_plainChanges; }

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
    const ObservableList<T> m_list;
    QObject m_context;
    QList<T> m_items;
    QStringList m_announced;
    int m_plainChanges = 0;
    QString m_complaint;

    void check(bool holds, const QString& what)
    {
        if (!holds && m_complaint.isEmpty())
            m_complaint = what;
    }

    T read(int index) const
    {
        try {
            return m_list[index];
        } catch (...) {
            return T();
        }
    }

    QList<T> readAll() const
    {
        QList<T> items;
        for (int i = 0; i < m_list.size(); ++i)
            items.append(read(i));
        return items;
    }

    void changedSomehow()
    {
        ++m_plainChanges;
        compare(QStringLiteral("something"));
    }

    void announced(const QString& announcement)
    {
        m_announced.append(announcement);
        compare(announcement);
    }

    void compare(const QString& announcement)
    {
        const QList<T> now = readAll();
        // Not by the lists' own operator, which passes null pointers to memcmp() when they are empty.
        check(std::equal(m_items.begin(), m_items.end(), now.begin(), now.end()),
              QStringLiteral("the list is another than announced: ") + announcement);
    }

    void added(int index)
    {
        check(index >= 0 && index <= m_items.size(), QStringLiteral("added where nothing can be"));
        m_items.insert(qBound(0, index, int(m_items.size())), read(index));
        announced(QStringLiteral("added %1").arg(index));
    }

    void updated(int index)
    {
        check(index >= 0 && index < m_items.size(), QStringLiteral("updated what is not there"));
        if (index >= 0 && index < m_items.size())
            m_items[index] = read(index);
        announced(QStringLiteral("updated %1").arg(index));
    }

    void removed(int index)
    {
        check(index >= 0 && index < m_items.size(), QStringLiteral("removed what is not there"));
        if (index >= 0 && index < m_items.size())
            m_items.removeAt(index);
        announced(QStringLiteral("removed %1").arg(index));
    }

    void changed(List::ChangeType::Type type, const List::IndexMapper* mapper)
    {
        QList<T> now = readAll();
        QList<int> indexes;
        if (type == List::ChangeType::IndexesChanged && mapper) {
            indexes = indexesOf(*mapper, int(m_items.size()));
            check(indexes.size() == m_items.size(), QStringLiteral("a mapper says that an item is there and gone"));
            for (int i = 0; i < m_items.size(); ++i) {
                const int to = indexes.at(i);
                check(to < now.size() && indexes.count(to) == (to < 0 ? indexes.count(-1) : 1),
                      QStringLiteral("items moved to where nothing is, or to one place"));
                check(to < 0 || to >= now.size() || now.at(to) == m_items.at(i),
                      QStringLiteral("another item stands where one moved to"));
            }
        }
        m_items.swap(now);
        announced(inWords(type, indexes));
    }
};

} // namespace iface
