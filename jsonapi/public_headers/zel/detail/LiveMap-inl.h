// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableTracker.h>
#include <iface/Round.h>
#include <iface/detail/MakeShared.h>
#include <zel/LiveMap.h>
#include <zel/detail/KeepAlive.h>
#include <zel/detail/MessageOrder.h>

#include <algorithm>
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
LiveMap<Key, T>::~LiveMap()
{
    stop();
}

template <class Key, class T>
typename LiveMap<Key, T>::Value LiveMap<Key, T>::doGet(const Key& key) const
{
    return m_loader.getObservableValue(key);
}

template <class Key, class T>
T LiveMap<Key, T>::contents(const Key& key) const
{
    iface::ObservableTracker::getterCalled(this);
    return m_loader.contents(key);
}

template <class Key, class T>
QString LiveMap<Key, T>::cookie() const
{
    return QString::number(qint32(reinterpret_cast<quintptr>(this)));
}

template <class Key, class T>
bool LiveMap<Key, T>::requestData(const QList<Key>& keys)
{
    // What there is of an answer may be of the batch before this one.
    if (m_answer == Answer::OfBatch)
        m_answer = Answer::OfOthers;
    requestListElements(keys, cookie());
    return true;
}

template <class Key, class T>
void LiveMap<Key, T>::requestListElements(const QList<Key>& keys, const QString& cookie) const
{
    const auto request =
        iface::detail::makeShared<JsonWriter>(QStringLiteral("requestListElements"), QStringLiteral("zel"));
    if (!cookie.isEmpty())
        request->addAttribute(QStringLiteral("cookie"), cookie);
    {
        const auto elements = request->addChild(QStringLiteral("elements"), JsonWriter::Array);
        QSharedPointer<JsonWriter> element;
        for (const Key& key : keys) {
            if (element)
                element->next();
            else
                element = elements->addChild(QString(), JsonWriter::Object);
            m_adapter->idToIdJson(key, element);
        }
    }
    send(request);
}

template <class Key, class T>
void LiveMap<Key, T>::requestListChange(const QList<T>& elements)
{
    const auto request =
        iface::detail::makeShared<JsonWriter>(QStringLiteral("requestListChange"), QStringLiteral("zel"));
    {
        const auto array = request->addChild(QStringLiteral("elements"), JsonWriter::Array);
        for (const T& element : elements)
            m_adapter->elementToJson(element, array);
    }
    send(request);
}

template <class Key, class T>
void LiveMap<Key, T>::dropUnderWay()
{
    m_answer.reset();
    m_loader.forgetRequests();
}

template <class Key, class T>
void LiveMap<Key, T>::requestAgain()
{
    m_loader.refresh();
}

template <class Key, class T>
void LiveMap<Key, T>::listAdd(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    const QList<T> records = parseElements(elementsOf(body));
    const int count = int(records.size());
    detail::MessageOrder::runParts(count + 1, [&](int i) {
        if (i < count) {
            takeRecord(records.at(i));
        } else if (!m_answer) {
            m_loader.endArrivedBatch();
        }
    });
}

template <class Key, class T>
void LiveMap<Key, T>::listElements(iface::JsonObjectReader body)
{
    if (cookieOf(body) == cookie())
        m_answer = Answer::Nothing;
}

template <class Key, class T>
void LiveMap<Key, T>::listChunk(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    const QList<T> records = parseElements(elementsOf(body));
    noteAnswered(records);
    typename Loader::Batch answered;
    if (m_answer && isLast(body))
        answered = m_loader.takeAnswered(*std::exchange(m_answer, std::nullopt));
    // The next request goes out first of all, so that the service works on it meanwhile.
    const int count = int(records.size());
    detail::MessageOrder::runParts(count + 2, [&](int i) {
        if (i == 0) {
            m_loader.requestNext();
        } else if (i <= count) {
            takeRecord(records.at(i - 1));
        } else {
            m_loader.settle(answered);
        }
    });
}

/// All before any is announced: the two take so much code that, in turns, each throws the other's out of the cache.
template <class Key, class T>
QList<T> LiveMap<Key, T>::parseElements(const iface::JsonArrayReader& elements)
{
    QList<T> records;
    const int count = elements.numChildren();
    records.reserve(count);
    for (int i = 0; i < count; ++i)
        records.append(m_adapter->jsonToElement(elements[i].object(), T()));
    return records;
}

/// More of an answer of ours has come, if one is under way.
template <class Key, class T>
void LiveMap<Key, T>::noteAnswered(const QList<T>& records)
{
    if (!m_answer || records.isEmpty() || m_answer == Answer::OfBatch)
        return;
    const bool isOfBatch = std::any_of(records.cbegin(), records.cend(), [this](const T& record) {
        return m_loader.isInFlight(m_adapter->elementToId(record));
    });
    m_answer = isOfBatch ? Answer::OfBatch : Answer::OfOthers;
}

template <class Key, class T>
void LiveMap<Key, T>::takeRecord(const T& record)
{
    const Key key = m_adapter->elementToId(record);
    iface::Round::together([&] {
        bool isUntold = recordCame(key);
        m_loader.store(key, record, [&] {
            isUntold = false;
            this->fireKeyChanged(key);
        });
        if (isUntold)
            this->fireKeyChanged(key);
    });
}

/// A change may have some members only. It is no answer to a request that is out for the whole record, which an answer
/// may have left out, or which is older than the connection.
template <class Key, class T>
void LiveMap<Key, T>::changeRecord(const Key& key, const T& record)
{
    iface::Round::together([&] { m_loader.change(key, record, [this, &key] { this->fireKeyChanged(key); }); });
}

template <class Key, class T>
void LiveMap<Key, T>::listChange(iface::JsonObjectReader body)
{
    const detail::KeepAlive keep(this);
    const iface::JsonArrayReader elements = elementsOf(body);
    detail::MessageOrder::runParts(elements.numChildren(), [&](int i) {
        const iface::JsonObjectReader json = elements[i].object();
        const Key key = m_adapter->idJsonToId(json);
        if (m_loader.isLoaded(key))
            changeRecord(key, m_adapter->jsonToElement(json, m_loader.contents(key)));
    });
}

} // namespace zel
