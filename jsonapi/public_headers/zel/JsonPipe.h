// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>
#include <iface/JsonReaderAttribute.h>
#include <iface/ObservableValue.h>
#include <zel/JsonWriter.h>

#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <boost/function.hpp>

namespace zel {

/// The two-way pipe of JSON messages to the core service.
///
/// Held by QSharedPointer; whoever listens or sends keeps it alive. One thread, that of the event loop that delivers.
/// Listeners are called synchronously, in the order in which they registered for the type; they may add and remove
/// listeners, delete their owner, send, and spin a nested event loop in which further messages arrive.
class ZEL_EXPORT JsonPipe
{
public:
    /// Called with the owner it was registered under and the body of the message, which is good until it returns.
    using Listener = boost::function<void(QObject* owner, iface::JsonReaderAttribute message)>;

    virtual ~JsonPipe();

    /// Registers a listener for messages of a type. It goes with its owner, or with removeListeners().
    virtual void addListener(QObject* owner, const QString& type, const Listener& callback) = 0;
    virtual void removeListeners(QObject* owner) = 0;
    /// Sends text that is one message already. Either send() may bring the answer before it returns, as a pipe within
    /// the process may: be ready for it when calling.
    virtual void send(const QString& text) = 0;
    /// True while the core service is to be reached; live containers ask again when it turns true.
    virtual iface::ObservableValue<bool> isConnected() const = 0;
    /// Ends the message and sends its text.
    virtual void send(const QSharedPointer<JsonWriter>& message) = 0;
};

} // namespace zel
