// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/detail/MakeShared.h>
#include <zel/LiveList.h>
#include <zel/detail/DistinctKeys.h>
#include <zel/detail/KeepAlive.h>
#include <zel/detail/MessageOrder.h>

#include <QtCore/QScopeGuard>

#include <utility>

namespace zel {

template <class T, class Key>
typename LiveList<T, Key>::Pointer LiveList<T, Key>::create(const QSharedPointer<ListApiMultiplexer>& multiplexer,
                                                            const QSharedPointer<Adapter>& adapter, const QString& type,
                                                            const QString& id, Keys keys)
{
    return Pointer(new LiveList(multiplexer, adapter, type, id, keys));
}

template <class T, class Key>
LiveList<T, Key>::LiveList(const QSharedPointer<ListApiMultiplexer>& multiplexer,
                           const QSharedPointer<Adapter>& adapter, const QString& type, const QString& id, Keys keys)
    : LiveListBase(multiplexer, type, id)
    , m_adapter(adapter)
    , m_keys(keys)
{
    start();
    requestAgain();
}

template <class T, class Key>
LiveList<T, Key>::~LiveList()
{
    stop();
}

template <class T, class Key>
bool LiveList<T, Key>::isIncomplete() const
{
    iface::ObservableTracker::getterCalled(this);
    return m_firstListPending;
}

/// What data() answers, without a path.
template <class T, class Key>
QVariant LiveList<T, Key>::itemAt(int index) const
{
    return index >= 0 && index < this->m_list.size() ? QVariant::fromValue(this->m_list.at(index)) : QVariant();
}

template <class T, class Key>
int LiveList<T, Key>::locateItem(const QString& key) const
{
    iface::ObservableTracker::getterCalled(this);
    return find(key);
}

template <class T, class Key>
int LiveList<T, Key>::find(const QString& key) const
{
    if (m_indexDirty) {
        m_index.clear();
        m_index.reserve(int(this->m_list.size()));
        for (const T& item : this->m_list)
            m_index.append(m_adapter->elementToId(item));
        m_indexDirty = false;
    }
    return m_index.indexOf(key);
}

template <class T, class Key>
void LiveList<T, Key>::requestRemoveId(const Key& key)
{
    const auto request =
        iface::detail::makeShared<JsonWriter>(QStringLiteral("requestListRemove"), QStringLiteral("zel"));
    {
        const auto elements = request->addChild(QStringLiteral("elements"), JsonWriter::Array);
        m_adapter->idToIdJson(key, elements->addChild(QString(), JsonWriter::Object));
    }
    send(request);
}

template <class T, class Key>
void LiveList<T, Key>::addCookieCallback(const QString& cookie, const CookieCallback& callback)
{
    m_cookieCallbacks[cookie].append(callback);
}

template <class T, class Key>
void LiveList<T, Key>::notifyAndClearCookie(const QString& cookie, const QList<Key>& keys)
{
    // Taken out first: a callback may wait for the same cookie again.
    const QList<CookieCallback> callbacks = m_cookieCallbacks.take(cookie);
    detail::MessageOrder::runParts(int(callbacks.size()), [&](int i) { callbacks.at(i)(keys); });
}

template <class T, class Key>
void LiveList<T, Key>::listAdd(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    QList<Key> keys;
    const iface::JsonArrayReader elements = elementsOf(body);
    const int count = elements.numChildren();
    detail::MessageOrder::runParts(count + 1, [&](int i) {
        if (i < count) {
            const T element = m_adapter->jsonToElement(elements[i].object(), T());
            keys.append(m_adapter->elementToId(element));
            addOrUpdate(element, keys.last());
        } else if (const QString cookie = cookieOf(body); !cookie.isEmpty()) {
            notifyAndClearCookie(cookie, keys);
        }
    });
}

template <class T, class Key>
void LiveList<T, Key>::addOrUpdate(const T& element, const QString& key)
{
    const int index = find(key);
    if (index == -1 && m_keys == Keys::Distinct && key.isEmpty())
        return;
    if (index == -1) {
        m_indexDirty = true; // and stays so if only one of the two can be had
        m_index.append(key);
        this->m_list.append(element);
        m_indexDirty = false;
        this->fireItemAdded(int(this->m_list.size()) - 1);
    } else if (!(this->m_list.at(index) == element)) {
        this->m_list[index] = element;
        this->fireItemUpdated(index);
    }
}

template <class T, class Key>
void LiveList<T, Key>::listChunk(iface::JsonObjectReader body)
{
    if (!isTransferring())
        return;
    const detail::KeepAlive keep(this);
    // A transfer of which a part is lost must not end as if it were whole. The list is asked for again.
    auto giveUp = qScopeGuard([this] { beginTransfer(Transfer::None); });
    const iface::JsonArrayReader elements = elementsOf(body);
    for (int i = 0, n = elements.numChildren(); i < n; ++i)
        m_received.append(m_adapter->jsonToElement(elements[i].object(), T()));
    if (isLast(body) && isFullList()) {
        if (m_keys == Keys::Distinct)
            keepDistinct(m_received);
        m_received.squeeze();
    }
    giveUp.dismiss();
    const Transfer completed = chunkTaken(isLast(body));
    // Moved aside before anything is announced: a handler's event loop may bring the next transfer.
    if (completed == Transfer::FullList) {
        finishFullList(std::exchange(m_received, {}));
    } else if (completed == Transfer::Elements) {
        finishElements(std::exchange(m_received, {}));
    }
}

template <class T, class Key>
void LiveList<T, Key>::finishFullList(QList<T> received)
{
    const bool first = std::exchange(m_firstListPending, false);
    if (received != this->m_list) {
        this->m_list.swap(received);
        m_indexDirty = true;
        m_index.clear();
        this->fireItemsChanged(iface::ObservableListImpl::ChangeType::Reset, {});
    } else if (first) {
        this->notifyObservers();
    }
}

template <class T, class Key>
void LiveList<T, Key>::keepDistinct(QList<T>& received) const
{
    detail::DistinctKeys distinct(received.size(),
                                  [&](int index) { return m_adapter->elementToId(received.at(index)); });
    QList<int> leftOut;
    for (int i = 0; i < int(received.size()); ++i) {
        if (distinct.isLeftOut(i))
            leftOut.append(i);
    }
    int index = 0;
    auto next = leftOut.cbegin();
    received.removeIf([&](const T&) {
        const bool isNext = next != leftOut.cend() && *next == index;
        ++index;
        next += isNext;
        return isNext;
    });
}

template <class T, class Key>
void LiveList<T, Key>::finishElements(const QList<T>& received)
{
    detail::MessageOrder::runParts(int(received.size()), [&](int i) {
        const T& element = received.at(i);
        const QString key = m_adapter->elementToId(element);
        const int index = find(key);
        if (index == -1) {
            logIgnored("Ignored attempt to update nonexistent element: ", key);
            return;
        }
        this->m_list[index] = element;
        this->fireItemUpdated(index);
    });
}

template <class T, class Key>
void LiveList<T, Key>::listChange(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    const iface::JsonArrayReader elements = elementsOf(body);
    detail::MessageOrder::runParts(elements.numChildren(), [&](int i) { changeElement(elements[i].object()); });
}

template <class T, class Key>
void LiveList<T, Key>::changeElement(const iface::JsonObjectReader& json)
{
    const QString key = m_adapter->idJsonToId(json);
    const int index = find(key);
    if (index == -1) {
        // Two blanks, where the line of an element transfer has one.
        logIgnored("Ignored attempt to update nonexistent element:  ", key);
        return;
    }
    const T changed = m_adapter->jsonToElement(json, this->m_list.at(index));
    if (changed == this->m_list.at(index))
        return;
    const QString newKey = m_adapter->elementToId(changed);
    this->m_list[index] = changed;
    if (newKey != key) {
        m_indexDirty = true; // and stays so if there is no room for the other key
        m_index.rename(key, newKey);
        m_indexDirty = false;
    }
    this->fireItemUpdated(index);
}

template <class T, class Key>
void LiveList<T, Key>::listRemove(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    const iface::JsonArrayReader elements = elementsOf(body);
    detail::MessageOrder::runParts(elements.numChildren(), [&](int i) {
        const QString key = m_adapter->idJsonToId(elements[i].object());
        const int index = find(key);
        if (index == -1)
            return;
        this->m_list.removeAt(index);
        m_index.remove(key);
        this->fireItemRemoved(index);
    });
}

} // namespace zel
