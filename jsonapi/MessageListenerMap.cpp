// SPDX-License-Identifier: Apache-2.0
#include <zel/MessageListenerMap.h>

#include <iface/ObservableTracker.h>
#include <zel/detail/MessageOrder.h>

#include <QtCore/QDebug>
#include <QtCore/QMap>
#include <QtCore/QPointer>
#include <QtCore/QStringList>

#include <algorithm>
#include <list>

namespace zel {

namespace {

struct MessageStruct
{
    QPointer<QObject> owner;
    const QObject* ownerKey; // what the owner was registered under: stays comparable when it is gone
    JsonPipe::Listener callback;
    bool removed = false;
};

using Listeners = std::list<MessageStruct>;

} // namespace

struct MessageListenerMap::Private
{
    QMap<QString, Listeners> listenersByType;
    QMap<const QObject*, QStringList> typesByOwner;
    int depth = 0; // dispatches under way: while there are any, entries are marked and stay where they are
    bool sweepNeeded = false;

    void forget(const MessageStruct& entry, const QString& type);
    void sweep();
};

void MessageListenerMap::Private::forget(const MessageStruct& entry, const QString& type)
{
    const auto types = typesByOwner.find(entry.ownerKey);
    if (types == typesByOwner.end())
        return;
    types->removeOne(type);
    if (types->isEmpty())
        typesByOwner.erase(types);
}

void MessageListenerMap::Private::sweep()
{
    sweepNeeded = false;
    Listeners dropped; // destroyed last: a callback's destructor may come back here
    for (auto type = listenersByType.begin(); type != listenersByType.end();) {
        for (auto entry = type->begin(); entry != type->end();) {
            const auto next = std::next(entry);
            if (entry->removed)
                dropped.splice(dropped.end(), *type, entry);
            entry = next;
        }
        type = type->empty() ? listenersByType.erase(type) : std::next(type);
    }
}

MessageListenerMap::MessageListenerMap()
    : d(std::make_shared<Private>())
{
}

MessageListenerMap::~MessageListenerMap()
{
    for (Listeners& listeners : d->listenersByType) {
        for (MessageStruct& entry : listeners)
            entry.removed = true;
    }
}

void MessageListenerMap::addListener(QObject* owner, const QString& type, const JsonPipe::Listener& callback)
{
    if (!owner) {
        qWarning("MessageListenerMap::addListener: a listener needs an owner");
        return;
    }
    d->listenersByType[type].push_back({owner, owner, callback});
    d->typesByOwner[owner].append(type);
}

void MessageListenerMap::removeListeners(QObject* owner)
{
    const QStringList types = d->typesByOwner.take(owner);
    for (const QString& type : types) {
        for (MessageStruct& entry : d->listenersByType[type]) {
            if (entry.ownerKey == owner) {
                entry.removed = true;
                d->sweepNeeded = true;
            }
        }
    }
    if (d->depth == 0 && d->sweepNeeded)
        d->sweep();
}

void MessageListenerMap::sendMessage(const QString& type, iface::JsonReaderAttribute message)
{
    struct Dispatch
    {
        explicit Dispatch(std::shared_ptr<Private> p)
            : state(std::move(p))
        {
            ++state->depth;
        }
        ~Dispatch()
        {
            if (--state->depth == 0 && state->sweepNeeded)
                state->sweep();
        }
        const std::shared_ptr<Private> state;
    };

    const auto listeners = d->listenersByType.find(type);
    if (listeners == d->listenersByType.end())
        return;
    const Dispatch dispatch(d);
    // What listeners read is no dependency of a computation in whose event loop the message arrives.
    const iface::ObservableTracker::Suspension untracked;
    const auto& state = dispatch.state;
    auto next = listeners->begin();
    // As many as there are now: who registers from here on hears from the next message on.
    detail::MessageOrder::runMessage(int(listeners->size()), [&](int) {
        MessageStruct& entry = *next++;
        if (entry.removed)
            return;
        if (!entry.owner) {
            entry.removed = true;
            state->sweepNeeded = true;
            state->forget(entry, type);
            return;
        }
        entry.callback(entry.owner, message);
    });
}

int MessageListenerMap::listenerCount(const QString& type) const
{
    const auto listeners = d->listenersByType.constFind(type);
    if (listeners == d->listenersByType.cend())
        return 0;
    return int(std::count_if(listeners->cbegin(), listeners->cend(), [](const auto& entry) { return !entry.removed; }));
}

} // namespace zel
