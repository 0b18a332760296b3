// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/BaseMap.h>
#include <iface/LazyLoader.h>
#include <zel/JsonAdapter.h>
#include <zel/detail/LiveContainer.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QList>

#include <optional>

namespace zel {

/// Mirrors a keyed list of the core service as an observable map of observable values, loaded as they are asked for.
///
/// Nothing is requested until somebody asks for a key; the keys asked for in one turn of the event loop go out
/// together (see iface::LazyLoader), one request at a time. Once an answer has come whole, and before it is stored, the
/// next request goes out if there are keys enough to fill it. Records that come unasked are stored too, and ask for
/// nothing. None is ever removed. Once the pipe reconnects, all keys are requested again.
///
/// A request without an answer is repeated, after 30 seconds at first, so that an answer may come late, twice, or to a
/// request that is no more. Answers do not say what they answer: one with records ends the request under way only if
/// it has one of its keys, and one without records ends the oldest that has no answer. What an answer left out, a part
/// of it being lost, is asked for again as well.
///
/// Lifetime: held by the pointer that create() returns and by handles made from it; keeps the multiplexer. Values
/// outlive the map as long as somebody holds them. One thread.
///
/// Announcements: a record whose contents changed is one change of its value and of the map, which everything derived
/// from either takes in before anybody is told (see iface::Round): then the observers of the value hear, and then the
/// map fires mapChanged() with that one key; never a batch. That the request of a key was answered is announced by the
/// value alone. A handler may do anything, spin a nested event loop in which further messages are applied included;
/// what it throws goes on once the message has been applied whole.
///
/// @tparam Key what records are found by: hashable
/// @tparam T the record; see JsonAdapter
template <class Key, class T>
class LiveMap : public detail::LiveContainer, public iface::BaseMap<Key, iface::ObservableValue<T>>
{
public:
    using Adapter = JsonAdapter<T, Key>;
    using Value = iface::ObservableValue<T>;
    using Pointer = QExplicitlySharedDataPointer<LiveMap>;

    static Pointer create(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QSharedPointer<Adapter>& adapter,
                          const QString& type, const QString& id);
    LiveMap(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QSharedPointer<Adapter>& adapter,
            const QString& type, const QString& id);
    ~LiveMap() override;

    /// The value of a key; the first use of a key asks the service for it.
    Value doGet(const Key& key) const override;
    /// What that value holds, for those who hear of changes from the map: it asks for the key, too, but makes no value
    /// for it. A read of the map that is tracked.
    T contents(const Key& key) const;

    /// Whether a record for the key has been stored, or its request has been answered without one. Asks for nothing
    /// and is no tracked read: the value's own observers hear when it turns.
    bool isLoaded(const Key& key) const { return m_loader.isLoaded(key); }
    /// All keys, in the order in which they came.
    QList<Key> keys() const { return m_loader.keys(); }

    /// Names this map's own requests, so that it knows their answers.
    QString cookie() const;
    void requestListElements(const QList<Key>& keys, const QString& cookie) const;
    /// Asks the service to change records. The map changes when the service says so.
    void requestListChange(const QList<T>& elements);

    void listAdd(iface::JsonObjectReader body) override;
    void listElements(iface::JsonObjectReader body) override;
    void listChunk(iface::JsonObjectReader body) override;
    void listChange(iface::JsonObjectReader body) override;

protected:
    void dropUnderWay() override;
    void requestAgain() override;
    /// A whole record is about to be stored. Answers whether its key is announced also if it is as it was.
    virtual bool recordCame(const Key&) { return false; }

private:
    using Loader = iface::LazyLoader<Key, T>;
    using Answer = typename Loader::Answer;

    bool requestData(const QList<Key>& keys);
    QList<T> parseElements(const iface::JsonArrayReader& elements);
    void noteAnswered(const QList<T>& records);
    void takeRecord(const T& record);
    void changeRecord(const Key& key, const T& record);

    const QSharedPointer<Adapter> m_adapter;
    mutable Loader m_loader;
    // What there is so far of the answer under way, if one of ours is.
    std::optional<Answer> m_answer;
};

} // namespace zel

#include <zel/detail/LiveMap-inl.h>
