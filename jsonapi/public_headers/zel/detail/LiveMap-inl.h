// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/LiveMap.h>
#include <zel/detail/KeepAlive.h>
#include <zel/detail/MessageOrder.h>

#include <utility>

namespace zel {

template <class Key, class T>
typename LiveMap<Key, T>::Pointer LiveMap<Key, T>::create(const QSharedPointer<ListApiMultiplexer>& multiplexer,
                                                          const QSharedPointer<Adapter>& adapter, const QString& type,
                                                          const QString& id)
{
    return Pointer(new LiveMap(multiplexer, adapter, type, id));
}

template <class Key, class T>
LiveMap<Key, T>::LiveMap(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QSharedPointer<Adapter>& adapter,
                         const QString& type, const QString& id)
    : LiveContainer(multiplexer, type, id)
    , m_adapter(adapter)
    , m_loader([this](const QList<Key>& keys) { requestData(keys); })
{
    start();
}

template <class Key, class T>
typename LiveMap<Key, T>::Value LiveMap<Key, T>::doGet(const Key& key) const
{
    return m_loader.getObservableValue(key);
}

template <class Key, class T>
QString LiveMap<Key, T>::cookie() const
{
    return QString::number(qint32(reinterpret_cast<quintptr>(this)));
}

template <class Key, class T>
bool LiveMap<Key, T>::requestData(const QList<Key>& keys)
{
    m_requested = keys;
    requestListElements(keys, cookie());
    return true;
}

template <class Key, class T>
void LiveMap<Key, T>::requestListElements(const QList<Key>& keys, const QString& cookie) const
{
    const auto request =
        QSharedPointer<JsonWriter>::create(QStringLiteral("requestListElements"), QStringLiteral("zel"));
    if (!cookie.isEmpty()) {
        request->addAttribute(QStringLiteral("cookie"), cookie);
    }
    {
        const auto elements = request->addChild(QStringLiteral("elements"), JsonWriter::Array);
        for (const Key& key : keys) {
            m_adapter->idToIdJson(key, elements->addChild(QString(), JsonWriter::Object));
        }
    }
    send(request);
}

template <class Key, class T>
void LiveMap<Key, T>::requestListChange(const QList<T>& elements)
{
    const auto request = QSharedPointer<JsonWriter>::create(QStringLiteral("requestListChange"), QStringLiteral("zel"));
    {
        const auto array = request->addChild(QStringLiteral("elements"), JsonWriter::Array);
        for (const T& element : elements) {
            m_adapter->elementToJson(element, array);
        }
    }
    send(request);
}

template <class Key, class T>
void LiveMap<Key, T>::requestAgain()
{
    ++m_refreshes;
    requestListElements(m_loader.keys(), cookie());
}

template <class Key, class T>
void LiveMap<Key, T>::listAdd(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    const QList<T> records = parseElements(elementsOf(body));
    detail::MessageOrder::runParts(int(records.size()), [&](int i) { takeRecord(records.at(i)); });
}

template <class Key, class T>
void LiveMap<Key, T>::listElements(iface::JsonObjectReader body)
{
    if (cookieOf(body) == cookie()) {
        m_awaitingElements = true;
        m_broughtRequested = false;
    }
}

template <class Key, class T>
void LiveMap<Key, T>::listChunk(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    const bool ends = m_awaitingElements && isLast(body);
    if (ends) {
        m_awaitingElements = false;
    }
    const bool wentOn = ends && m_refreshes == 0 && m_loader.requestNext();
    const QList<T> records = parseElements(elementsOf(body));
    const int count = int(records.size());
    const auto takePart = [&](int i) {
        if (i < count) {
            takeRecord(records.at(i));
        } else if (ends) {
            wentOn ? m_loader.answerStored() : answerCompleted();
        }
    };
    try {
        detail::MessageOrder::runParts(count + 1, takePart);
    } catch (...) {
        // Without the early request, the one under way would be sent again for want of an end.
        if (wentOn) {
            m_loader.answerLost();
        }
        throw;
    }
}

/// All before any is announced: the two take so much code that, in turns, each throws the other's out of the cache.
template <class Key, class T>
QList<T> LiveMap<Key, T>::parseElements(const iface::JsonArrayReader& elements)
{
    QList<T> records;
    const int count = elements.numChildren();
    records.reserve(count);
    for (int i = 0; i < count; ++i) {
        records.append(m_adapter->jsonToElement(elements[i].object(), T()));
    }
    return records;
}

template <class Key, class T>
void LiveMap<Key, T>::takeRecord(const T& record)
{
    const Key key = m_adapter->elementToId(record);
    if (m_refreshes > 0 && m_requested.contains(key)) {
        m_broughtRequested = true;
    }
    store(key, record);
}

template <class Key, class T>
void LiveMap<Key, T>::store(const Key& key, const T& record)
{
    if (m_loader.store(key, record)) {
        this->fireKeyChanged(key);
    }
}

template <class Key, class T>
void LiveMap<Key, T>::answerCompleted()
{
    if (m_refreshes > 0 && !m_broughtRequested) {
        --m_refreshes; // it says nothing about the loader's request, which goes on; two empty answers may be swapped
        return;
    }
    m_requested.clear();
    m_loader.updateDone();
}

template <class Key, class T>
void LiveMap<Key, T>::listChange(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    const iface::JsonArrayReader elements = elementsOf(body);
    detail::MessageOrder::runParts(elements.numChildren(), [&](int i) {
        const iface::JsonObjectReader json = elements[i].object();
        const Key key = m_adapter->idJsonToId(json);
        if (m_loader.isLoaded(key)) {
            store(key, m_adapter->jsonToElement(json, m_loader.value(key)->getValue()));
        }
    });
}

} // namespace zel
