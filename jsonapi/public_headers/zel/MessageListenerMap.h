// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonPipe.h>

#include <memory>

namespace zel {

/// The listeners of a pipe by message type.
///
/// Owned by the pipe. Every listener of a type gets every message of it, in order of registration. Listeners are
/// kept by a guarded owner: once the owner is gone they are called no more, and the next message of their type drops
/// them. One thread.
///
/// Dispatching may nest, and a listener may add, remove and delete whatever it likes, the map itself included. One
/// that is removed is not called any more, even by the dispatch under way; one that is added hears from the next
/// message on. Messages stay in order all the same: one that arrives in a listener's nested event loop is handed out
/// after whatever is left of the messages before it, and before the event loop goes on. What a listener throws keeps no
/// other from being called: the first exception passes on to the sender once all have been. What a listener reads is no
/// dependency of a computation that waits below.
class ZEL_EXPORT MessageListenerMap
{
public:
    MessageListenerMap();
    ~MessageListenerMap();
    MessageListenerMap(const MessageListenerMap&) = delete;
    MessageListenerMap& operator=(const MessageListenerMap&) = delete;

    void addListener(QObject* owner, const QString& type, const JsonPipe::Listener& callback);
    void removeListeners(QObject* owner);
    /// Hands the message to the listeners of its type. A type that nobody listens to is dropped without a word.
    void sendMessage(const QString& type, iface::JsonReaderAttribute message);

    /// Entries kept for a type, those of owners that are gone but not dropped yet included.
    int listenerCount(const QString& type) const;

private:
    struct Private;
    std::shared_ptr<Private> d; // shared with a dispatch under way, which may outlive the map
};

} // namespace zel
