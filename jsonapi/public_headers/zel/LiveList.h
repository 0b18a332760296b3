// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/BaseListImpl.h>
#include <iface/ObservableTracker.h>
#include <zel/JsonAdapter.h>
#include <zel/LiveListBase.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QList>
#include <QtCore/QMap>

#include <boost/function.hpp>

namespace zel {

/// Mirrors one whole list of the core service as an observable list.
///
/// Asks for the list one turn of the event loop after it is made and whenever the pipe reconnects, and applies what
/// the service then says: whole lists and single elements in chunks, additions, changes, removals. An addition of a
/// known key is an update. A request that stays without an answer is repeated, after 30 seconds at first, and a
/// whole list that stops coming is asked for, also when it was sent unasked.
///
/// Lifetime: held by the pointer that create() returns and by handles made from it; keeps the multiplexer. Take a
/// handle before the event loop runs, as with every observable. One thread. When it dies it leaves the multiplexer
/// before anything else.
///
/// Announcements are made item by item, each when the list shows that very change and not yet the next one; a whole
/// list that differs is one change of kind Reset. The first whole list is announced to plain observers even when it
/// is equal to what was there. A handler may do anything, spin a nested event loop in which further messages are
/// applied included; what it throws goes on once the message has been applied whole.
///
/// Cost: a message costs O(log n) an element for its keys, and a removal in the middle moves the items behind it, which
/// is one move of memory. The index is entered anew only at the first lookup after a whole list came.
///
/// @tparam T the element; see JsonAdapter
/// @tparam Key its key, which converts to a QString
template <class T, class Key = QString>
class LiveList : public LiveListBase, public iface::BaseListImpl<T>
{
public:
    using Adapter = JsonAdapter<T, Key>;
    using CookieCallback = boost::function<void(QList<Key> keys)>;
    using Pointer = QExplicitlySharedDataPointer<LiveList>;

    static Pointer create(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QSharedPointer<Adapter>& adapter,
                          const QString& type, const QString& id, Keys keys = Keys::AsTheyCome);
    LiveList(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QSharedPointer<Adapter>& adapter,
             const QString& type, const QString& id, Keys keys = Keys::AsTheyCome);
    ~LiveList() override;

    /// True until the first whole list has arrived; a read that is tracked. Whoever watches is told when it turns.
    bool isIncomplete() const;

    /// The index of the item with that key, or -1; a read that is tracked. Of several with one key, the last.
    int locateItem(const QString& key) const;

    QVariant itemAt(int index) const override;

    /// Asks the service to remove an element. The list changes when the service says so.
    void requestRemoveId(const Key& key);

    /// Calls back once, when elements are added in answer to the request that carried this cookie.
    void addCookieCallback(const QString& cookie, const CookieCallback& callback);
    void notifyAndClearCookie(const QString& cookie, const QList<Key>& keys);

    void listAdd(iface::JsonObjectReader body) override;
    void listChunk(iface::JsonObjectReader body) override;
    void listChange(iface::JsonObjectReader body) override;
    void listRemove(iface::JsonObjectReader body) override;

protected:
    void dropReceived() override { m_received.clear(); }

private:
    int find(const QString& key) const;
    void finishFullList(QList<T> received);
    void keepDistinct(QList<T>& received) const;
    void finishElements(const QList<T>& received);
    void addOrUpdate(const T& element, const QString& key);
    void changeElement(const iface::JsonObjectReader& json);

    const QSharedPointer<Adapter> m_adapter;
    const Keys m_keys;
    QList<T> m_received; // of the transfer under way
    QMap<QString, QList<CookieCallback>> m_cookieCallbacks;
};

} // namespace zel

#include <zel/detail/LiveList-inl.h>
