// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonPipe.h>
#include <zel/JsonWriter.h>
#include <zel/MessageListenerMap.h>

#include <iface/ObservableValue.h>
#include <iface/WritableObservableValue.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace zelsplib {

/// The message pipe to the core service: one publish/subscribe object, opened for the life of this manager.
///
/// Every message out is one write, never retried and never queued; what the object publishes is read elsewhere and
/// comes in through dispatchMessageReceived(). Owned by the facade, shared with every manager as their pipe.
///
/// Used on the thread of the event loop. Listeners are called synchronously while a message is dispatched; they
/// may send, add and remove listeners and spin an event loop in which further messages are dispatched.
class PPSManager : public QObject, public zel::JsonPipe
{
    Q_OBJECT

public:
    /// Opens the object at `path`; throws the error number as an int when that fails.
    /// `objectName` is the object looked for in what comes in, `messageName` the "msg" of what goes out.
    PPSManager(const QString& path, const QString& objectName, const QString& messageName);
    ~PPSManager() override;

    void send(const QSharedPointer<zel::JsonWriter>& writer) override { send(writer->toString()); }
    void send(const QString& json) override;
    void addListener(QObject* owner, const QString& messageType, const Listener& listener) override;
    void removeListeners(QObject* owner) override { m_listeners.removeListeners(owner); }
    /// Stays true: the object hides from its users whether somebody serves it.
    iface::ObservableValue<bool> isConnected() const override { return m_connected; }

    /// The object's descriptor, to be watched for reading; it stays this manager's.
    int getPpsHandle() const { return m_ppsHandle; }

    /// Decodes what one read of the object gave and calls the listeners of its message. What cannot be decoded is
    /// dropped.
    void dispatchMessageReceived(const QString& ppsText) { dispatchMessageReceived(ppsText.toUtf8()); }
    /// The same with the bytes as they were read. What is not UTF-8 in them counts as U+FFFD.
    void dispatchMessageReceived(const QByteArray& ppsText);

    /// The message's text, for the log only.
    QString getJsonFromPps(const QString& ppsText) const;

Q_SIGNALS:
    /// A message has gone out that is longer than the 65536 bytes which one read takes: it is lost on the other side.
    void messageTooLong();

private:
    bool dispatchText(const QByteArray& ppsText);

    zel::MessageListenerMap m_listeners;
    const int m_ppsHandle;
    const QByteArray m_objectName; ///< as it stands in a text, behind its mark
    const QByteArray m_messageName;
    const iface::ObservableValue<bool> m_connected{new iface::WritableObservableValue<bool>(true)};
};

} // namespace zelsplib
