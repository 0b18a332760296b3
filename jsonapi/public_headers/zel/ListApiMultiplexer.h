// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonPipe.h>
#include <zel/ListApiHandler.h>

#include <QtCore/QList>
#include <QtCore/QMap>

namespace zel {

/// Hands every list message of the pipe to the handlers of the list it is about, in order of registration.
///
/// Lists are named by type and id; a missing one reads as empty. Messages about lists that nobody mirrors are dropped
/// without a word. Handlers are not owned and are asked for before each call: one that was removed while a message is
/// being handed round is not called, one that was added hears from the next message on. Dispatching may nest.
/// Held by QSharedPointer by the containers on it; one thread.
class ZEL_EXPORT ListApiMultiplexer : public QObject
{
    Q_OBJECT

public:
    using Operation = void (ListApiHandler::*)(iface::JsonObjectReader);

    explicit ListApiMultiplexer(const QSharedPointer<JsonPipe>& pipe);
    ~ListApiMultiplexer() override;

    QSharedPointer<JsonPipe> pipe() const { return m_pipe; }

    /// A handler serves one list at a time: adding it to another one takes it from the list it had. Adding it twice to
    /// the same list has it called twice.
    void addHandler(const QString& type, const QString& id, ListApiHandler* handler);
    /// Takes a handler out; one that is not in does no harm.
    void removeHandler(ListApiHandler* handler);

    void send(const QSharedPointer<JsonWriter>& message);

    void listAdd(QObject* sender, iface::JsonReaderAttribute message);
    void listAll(QObject* sender, iface::JsonReaderAttribute message);
    void listChange(QObject* sender, iface::JsonReaderAttribute message);
    void listChunk(QObject* sender, iface::JsonReaderAttribute message);
    void listElements(QObject* sender, iface::JsonReaderAttribute message);
    void listRemove(QObject* sender, iface::JsonReaderAttribute message);
    void listWindow(QObject* sender, iface::JsonReaderAttribute message);

private:
    /// Numbers tell a handler from one that begins later in the same place of memory.
    struct Registration
    {
        QString key;
        quint64 number = 0;
    };

    void processListMessage(QObject* sender, iface::JsonReaderAttribute message, Operation operation);
    /// As it was when no more than `last` had been registered.
    bool isRegistered(const QString& key, ListApiHandler* handler, quint64 last) const;

    QSharedPointer<JsonPipe> m_pipe;
    QMap<QString, QList<ListApiHandler*>> m_handlersByKey;
    QMap<ListApiHandler*, Registration> m_registrations;
    quint64 m_lastRegistration = 0;
};

} // namespace zel
