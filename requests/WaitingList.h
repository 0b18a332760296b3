// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/RequestError.h>

#include <QtCore/QFuture>
#include <QtCore/QFutureWatcher>
#include <QtCore/QList>
#include <QtCore/QPromise>
#include <QtCore/QTimer>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace vx::platform::zel {

/// The promise of a request, of whatever type. Destroying it cancels the future that is not finished.
///
/// However it ends, continuations of the application run inside: they may make requests, spin an event loop, and
/// destroy Requests. So it is taken out of its list first, and nothing of the list is touched afterwards.
class AnyPromise
{
public:
    explicit AnyPromise(const QString& subject)
        : m_subject(subject)
    {
    }
    AnyPromise(const AnyPromise&) = delete;
    AnyPromise& operator=(const AnyPromise&) = delete;
    virtual ~AnyPromise() = default;

    void fail(RequestError::Reason reason, const QString& why)
    {
        end(RequestError(reason, m_subject + QStringLiteral(": ") + why));
    }

private:
    virtual void end(const RequestError& error) = 0;

    QString const m_subject; ///< what was asked for
};

template <typename T>
class PromiseOf final : public AnyPromise
{
public:
    explicit PromiseOf(const QString& subject)
        : AnyPromise(subject)
    {
        m_promise.start();
    }

    QFuture<T> future() const { return m_promise.future(); }

    /// A future that was cancelled meanwhile stays so.
    template <typename... Value>
    void answer(const Value&... value)
    {
        (m_promise.addResult(value), ...);
        m_promise.finish();
    }

private:
    void end(const RequestError& error) override
    {
        m_promise.setException(error);
        m_promise.finish();
    }

    QPromise<T> m_promise;
};

class WaitingListBase
{
public:
    WaitingListBase() = default;
    WaitingListBase(const WaitingListBase&) = delete;
    WaitingListBase& operator=(const WaitingListBase&) = delete;
    virtual ~WaitingListBase() = default;

    /// Moves all to the end of \a taken.
    virtual void takeAll(std::vector<std::unique_ptr<AnyPromise>>& taken) = 0;
};

/// The requests that wait for one kind of answer, by what the answer is known by; equal ones in the order in which they
/// were made. A request leaves the list when it ends: what is in the list is not finished.
template <typename Key, typename T>
class WaitingList final : public WaitingListBase
{
    struct Request
    {
        explicit Request(const QString& subject)
            : promise(std::make_unique<PromiseOf<T>>(subject))
        {
            watcher.setFuture(promise->future());
        }

        std::unique_ptr<PromiseOf<T>> promise;
        QFutureWatcher<T> watcher; ///< tells when the application cancels the future
        QTimer timeout;
    };
    using RequestMap = std::multimap<Key, Request>;

public:
    using Place = typename RequestMap::iterator;

    explicit WaitingList(const QString& subject)
        : m_subject(subject)
    {
    }

    /// \a timeout of 0 or less: none.
    Place add(const Key& key, std::chrono::milliseconds timeout);
    /// A future that failed before it was in the list.
    QFuture<T> failed(RequestError::Reason reason, const QString& why) const
    {
        PromiseOf<T> promise(m_subject);
        promise.fail(reason, why);
        return promise.future();
    }
    QFuture<T> future(Place place) const { return place->second.promise->future(); }
    void fail(Place place, RequestError::Reason reason, const QString& why) { take(place)->fail(reason, why); }

    std::size_t size() const { return m_requests.size(); }
    QList<Key> keys() const;
    void takeAll(std::vector<std::unique_ptr<AnyPromise>>& taken) override;

    /// Answers the first that waits for this.
    template <typename... Value>
    void answerFirst(const Key& key, const Value&... value)
    {
        const Place first = m_requests.lower_bound(key);
        if (first != m_requests.upper_bound(key))
            take(first)->answer(value...);
    }
    /// Answers all that wait for this.
    template <typename... Value>
    void answerAll(const Key& key, const Value&... value)
    {
        for (const auto& promise : takeRange(m_requests.lower_bound(key), m_requests.upper_bound(key)))
            promise->answer(value...);
    }
    void failAll(const Key& key, RequestError::Reason reason, const QString& why)
    {
        for (const auto& promise : takeRange(m_requests.lower_bound(key), m_requests.upper_bound(key)))
            promise->fail(reason, why);
    }

private:
    std::unique_ptr<PromiseOf<T>> take(Place place);
    std::vector<std::unique_ptr<PromiseOf<T>>> takeRange(Place first, Place last);

    QString const m_subject;
    RequestMap m_requests;
};

template <typename Key, typename T>
typename WaitingList<Key, T>::Place WaitingList<Key, T>::add(const Key& key, std::chrono::milliseconds timeout)
{
    const Place place = m_requests.emplace(key, m_subject);
    Request& request = place->second;
    QObject::connect(&request.watcher, &QFutureWatcherBase::canceled, &request.watcher, [this, place] { take(place); });
    if (timeout > std::chrono::milliseconds::zero()) {
        request.timeout.callOnTimeout(&request.timeout, [this, place, timeout] {
            fail(place, RequestError::TimedOut,
                 QStringLiteral("no answer within %1 s").arg(static_cast<double>(timeout.count()) / 1000));
        });
        request.timeout.setSingleShot(true);
        request.timeout.start(timeout);
    }
    return place;
}

template <typename Key, typename T>
QList<Key> WaitingList<Key, T>::keys() const
{
    QList<Key> keys;
    for (auto it = m_requests.cbegin(); it != m_requests.cend(); it = m_requests.upper_bound(it->first))
        keys.append(it->first);
    return keys;
}

template <typename Key, typename T>
std::unique_ptr<PromiseOf<T>> WaitingList<Key, T>::take(Place place)
{
    auto promise = std::move(place->second.promise);
    m_requests.erase(place);
    return promise;
}

template <typename Key, typename T>
std::vector<std::unique_ptr<PromiseOf<T>>> WaitingList<Key, T>::takeRange(Place first, Place last)
{
    std::vector<std::unique_ptr<PromiseOf<T>>> taken;
    for (Place place = first; place != last; ++place)
        taken.push_back(std::move(place->second.promise));
    m_requests.erase(first, last);
    return taken;
}

template <typename Key, typename T>
void WaitingList<Key, T>::takeAll(std::vector<std::unique_ptr<AnyPromise>>& taken)
{
    auto all = takeRange(m_requests.begin(), m_requests.end());
    std::move(all.begin(), all.end(), std::back_inserter(taken));
}

} // namespace vx::platform::zel
