// SPDX-License-Identifier: Apache-2.0
#include <zel/ListApiMultiplexer.h>

#include <zel/detail/MessageOrder.h>

#include <QtCore/QPointer>

namespace zel {

namespace {

QString listKey(const QString& type, const QString& id)
{
    return type + u'/' + id;
}

} // namespace

ListApiMultiplexer::ListApiMultiplexer(const QSharedPointer<JsonPipe>& pipe)
    : m_pipe(pipe)
{
    using Receiver = void (ListApiMultiplexer::*)(QObject*, iface::JsonReaderAttribute);
    static constexpr struct
    {
        const char16_t* type;
        Receiver receiver;
    } messages[] = {
        {u"listAdd", &ListApiMultiplexer::listAdd},           {u"listAll", &ListApiMultiplexer::listAll},
        {u"listChange", &ListApiMultiplexer::listChange},     {u"listChunk", &ListApiMultiplexer::listChunk},
        {u"listElements", &ListApiMultiplexer::listElements}, {u"listRemove", &ListApiMultiplexer::listRemove},
        {u"listWindow", &ListApiMultiplexer::listWindow},
    };
    for (const auto& message : messages) {
        m_pipe->addListener(this, QString::fromUtf16(message.type),
                            [this, receiver = message.receiver](QObject* sender, iface::JsonReaderAttribute body) {
                                (this->*receiver)(sender, body);
                            });
    }
}

ListApiMultiplexer::~ListApiMultiplexer() = default;

void ListApiMultiplexer::addHandler(const QString& type, const QString& id, ListApiHandler* handler)
{
    const QString key = listKey(type, id);
    if (m_registrations.value(handler).key != key)
        removeHandler(handler);
    // In this order: what finds no memory for the second leaves nobody behind who cannot be removed.
    if (!m_registrations.contains(handler))
        m_registrations.insert(handler, {key, ++m_lastRegistration});
    m_handlersByKey[key].append(handler);
}

void ListApiMultiplexer::removeHandler(ListApiHandler* handler)
{
    const QString key = m_registrations.take(handler).key; // no list's is empty
    const auto handlers = m_handlersByKey.find(key);
    if (handlers == m_handlersByKey.end())
        return;
    handlers->removeAll(handler);
    if (handlers->isEmpty())
        m_handlersByKey.erase(handlers);
}

void ListApiMultiplexer::send(const QSharedPointer<JsonWriter>& message)
{
    m_pipe->send(message);
}

void ListApiMultiplexer::listAdd(QObject* sender, iface::JsonReaderAttribute message)
{
    processListMessage(sender, message, &ListApiHandler::listAdd);
}

void ListApiMultiplexer::listAll(QObject* sender, iface::JsonReaderAttribute message)
{
    processListMessage(sender, message, &ListApiHandler::listAll);
}

void ListApiMultiplexer::listChange(QObject* sender, iface::JsonReaderAttribute message)
{
    processListMessage(sender, message, &ListApiHandler::listChange);
}

void ListApiMultiplexer::listChunk(QObject* sender, iface::JsonReaderAttribute message)
{
    processListMessage(sender, message, &ListApiHandler::listChunk);
}

void ListApiMultiplexer::listElements(QObject* sender, iface::JsonReaderAttribute message)
{
    processListMessage(sender, message, &ListApiHandler::listElements);
}

void ListApiMultiplexer::listRemove(QObject* sender, iface::JsonReaderAttribute message)
{
    processListMessage(sender, message, &ListApiHandler::listRemove);
}

void ListApiMultiplexer::listWindow(QObject* sender, iface::JsonReaderAttribute message)
{
    processListMessage(sender, message, &ListApiHandler::listWindow);
}

bool ListApiMultiplexer::isRegistered(const QString& key, ListApiHandler* handler, quint64 last) const
{
    const auto entry = m_registrations.constFind(handler);
    return entry != m_registrations.cend() && entry->key == key && entry->number <= last;
}

void ListApiMultiplexer::processListMessage(QObject*, iface::JsonReaderAttribute message, Operation operation)
{
    const iface::JsonObjectReader body = message.object();
    QString id;
    QString type;
    body.readString("id", id);
    body.readString("type", type);
    const QString key = listKey(type, id);
    const auto entry = m_handlersByKey.constFind(key);
    if (entry == m_handlersByKey.cend())
        return;
    const QList<ListApiHandler*> handlers = entry.value();
    const QPointer<ListApiMultiplexer> self(this);
    detail::MessageOrder::runParts(int(handlers.size()), [&, last = m_lastRegistration](int i) {
        if (self && isRegistered(key, handlers.at(i), last))
            (handlers.at(i)->*operation)(body);
    });
}

} // namespace zel
