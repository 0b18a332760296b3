// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/EventQueue.h>

#include <zel/LiveList.h>

#include <iface/ObservableListImplFunctorAdapter.h>
#include <iface/ObserverFunctorAdapter.h>

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

namespace zelsplib {

/// One of the box's lists: as the service has it, and a copy in list order of what the application has been told of,
/// which a removal, or a list that came whole again, is compared with. What differs makes an event; of the first whole
/// list nothing does, since it is what the box held all along. Boxes are small, so looking up walks.
///
/// A member of the manager. An event may do anything.
template <typename Record, QString (Record::*key)() const>
class BoxList
{
public:
    using List = zel::LiveList<Record, QString>;
    using Event = std::function<void(const Record&)>;

    BoxList(EventQueue& events, Event added, Event updated, Event removed)
        : m_events(events)
        , m_added(std::move(added))
        , m_updated(std::move(updated))
        , m_removed(std::move(removed))
    {
    }
    virtual ~BoxList() = default;

    /// Starts to mirror the list. `changed` is called after any change, the first whole list included.
    void start(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
               const QSharedPointer<typename List::Adapter>& adapter, const QString& type,
               const std::function<void()>& changed)
    {
        using Path = QVariantList;
        m_list = List::create(multiplexer, adapter, type, {});
        m_items = std::make_unique<iface::ObservableListImplFunctorAdapter>(
            m_list.data(), [this](const Path& path) { add(List::indexOfPath(path)); },
            [this](const Path& path) { update(List::indexOfPath(path)); },
            [this](const Path& path) { remove(List::indexOfPath(path)); }, [this](auto, const auto&) { replaceAll(); });
        // A first transfer that brings nothing new is announced to plain observers alone.
        m_changes = std::make_unique<iface::ObserverFunctorAdapter>(changed);
        m_list->addObserver(m_changes.get());
    }

    const QList<Record>& records() const { return m_records; }

    /// The last one with this key; null when there is none. Good until the next change.
    const Record* find(const QString& wanted) const
    {
        const auto found = std::find_if(m_records.crbegin(), m_records.crend(),
                                        [&wanted](const Record& record) { return (record.*key)() == wanted; });
        return found == m_records.crend() ? nullptr : &*found;
    }

    /// Whether the service has listed it, told or not. False before start().
    bool isListed(const QString& wanted) const { return m_list && m_list->locateItem(wanted) != -1; }
    /// Asks for its removal; nothing is sent before start().
    void requestRemoval(const QString& wanted)
    {
        if (m_list)
            m_list->requestRemoveId(wanted);
    }

    /// Whether the first whole list has come, as of the last noteCompleteness().
    bool isComplete() const { return m_complete; }
    void noteCompleteness() { m_complete = !m_list->isIncomplete(); }

protected:
    const List& list() const { return *m_list; }

private:
    /// What is kept of a record that is listed.
    virtual Record completed(const Record& listed) const { return listed; }
    /// Such a record is about to be kept.
    virtual void settle(const Record&) {}
    virtual bool mayAdd(int) const { return true; }

    Record listedAt(int index) const { return completed(m_list->data(List::pathOf(index)).template value<Record>()); }
    bool isKept(int index) const { return index >= 0 && index < m_records.size(); }

    void add(int index)
    {
        if (index == -1 || !mayAdd(index))
            return;
        const Record record = listedAt(index);
        settle(record);
        m_records.insert(qBound(qsizetype(0), qsizetype(index), m_records.size()), record);
        tell({record}, m_added);
    }

    void update(int index)
    {
        if (index == -1)
            return;
        const Record record = listedAt(index);
        settle(record);
        if (isKept(index) && std::exchange(m_records[index], record) != record)
            tell({record}, m_updated);
    }

    void remove(int index)
    {
        if (isKept(index))
            tell({m_records.takeAt(index)}, m_removed);
    }

    void replaceAll()
    {
        QList<Record> records;
        for (int i = 0, count = m_list->childCount({}); i < count; ++i)
            records.append(listedAt(i));
        for (const Record& record : std::as_const(records))
            settle(record);
        const QList<Record> before = std::exchange(m_records, records);
        if (m_complete) {
            const Parts old = split(before, records);
            const Parts now = split(records, before);
            post(old.others, m_removed);
            post(now.others, m_added);
            post(otherInTheirPlaces(old.common, now.common), m_updated);
        }
        m_events.deliver();
    }

    struct Parts
    {
        QList<Record> common; ///< whose keys the other list has, too, as often
        QList<Record> others;
    };
    static Parts split(const QList<Record>& records, const QList<Record>& by)
    {
        QHash<QString, int> counts;
        for (const Record& record : by)
            ++counts[(record.*key)()];
        Parts parts;
        for (const Record& record : records)
            (counts[(record.*key)()]-- > 0 ? parts.common : parts.others).append(record);
        return parts;
    }

    /// Those in whose place another record stood, of the same key or not: what moves is told like what changes.
    static QList<Record> otherInTheirPlaces(const QList<Record>& before, const QList<Record>& now)
    {
        QList<Record> others;
        for (qsizetype i = 0; i < now.size(); ++i) {
            if (i >= before.size() || before.at(i) != now.at(i))
                others.append(now.at(i));
        }
        return others;
    }

    void post(const QList<Record>& records, const Event& event)
    {
        for (const Record& record : records)
            m_events.post([event, record] { event(record); });
    }
    void tell(const QList<Record>& records, const Event& event)
    {
        post(records, event);
        m_events.deliver();
    }

    EventQueue& m_events;
    const Event m_added;
    const Event m_updated;
    const Event m_removed;
    typename List::Pointer m_list; ///< null until start()
    QList<Record> m_records;
    bool m_complete = false;
    std::unique_ptr<iface::ObservableListImplFunctorAdapter> m_items;
    std::unique_ptr<iface::ObserverFunctorAdapter> m_changes;
};

} // namespace zelsplib
