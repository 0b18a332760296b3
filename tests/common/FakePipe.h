// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/WritableObservableValue.h>
#include <zel/JsonPipe.h>
#include <zel/MessageListenerMap.h>
#include <zel/PpsJsonSource.h>

#include <device/Decoder.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <functional>
#include <utility>

/// A message as it comes over the object, and a source that reads its value.
template <class Source = zel::PpsJsonSource>
struct ReadMessage
{
    explicit ReadMessage(const QByteArray& json)
        : text("@platform\ndat:json:" + json + '\n')
    {
    }

    const QByteArray text;
    device::Decoder taken{text};
    const bool isEntered = pps_decoder_push(taken.get(), "@platform") == PPS_DECODER_OK &&
                           pps_decoder_push(taken.get(), "dat") == PPS_DECODER_OK;
    Source source{taken.get()};
    const iface::JsonNodeReader root = source.startParsing();
};

/// A pipe whose other end is the test: keeps what is sent, and delivers what the test injects through the real decoder
/// and reader, as the channel does.
class FakePipe : public zel::JsonPipe
{
public:
    void addListener(QObject* owner, const QString& type, const Listener& callback) override
    {
        m_listeners.addListener(owner, type, callback);
    }
    void removeListeners(QObject* owner) override { m_listeners.removeListeners(owner); }
    void send(const QString& text) override
    {
        m_sent.append(text.toUtf8());
        sending();
    }
    void send(const QSharedPointer<zel::JsonWriter>& message) override { send(message->toString()); }
    iface::ObservableValue<bool> isConnected() const override
    {
        return iface::ObservableValue<bool>(m_connected.data());
    }

    /// Called before send() returns: a service may be that quick.
    std::function<void()> sending = [] {};

    void setConnected(bool connected) { m_connected->setValue(connected); }
    int listenerCount(const QString& type) const { return m_listeners.listenerCount(type); }

    /// Delivers one message, if it can be read.
    void inject(const QByteArray& json)
    {
        ReadMessage message(json);
        const QByteArray type = message.isEntered ? pps_decoder_name(message.taken.get()) : nullptr;
        if (!type.isNull())
            m_listeners.sendMessage(QString::fromUtf8(type), message.root[type.constData()]);
    }
    /// The same of a form, with the values in the places of its @ and double quotes for its single ones.
    void inject(QByteArray form, const QByteArrayList& values)
    {
        form.replace('\'', '"');
        qsizetype at = 0;
        for (const QByteArray& value : values) {
            at = form.indexOf('@', at);
            form.replace(at, 1, value);
            at += value.size();
        }
        inject(form);
    }

    int sentCount() const { return int(m_sent.size()); }
    void clearSent() { m_sent.clear(); }
    /// Takes the first text that was sent and not taken yet, exactly as written; empty when there is none.
    QByteArray takeSent() { return m_sent.isEmpty() ? QByteArray() : m_sent.takeFirst(); }

    /// Takes everything, each text as its name and its values in their order: "requestUserAvatar me p1". A request for
    /// elements shows without its cookie, which is kept for the answer.
    QStringList takeSentInWords()
    {
        static const QRegularExpression request(QStringLiteral("\"cookie\":\"(-?[0-9]+)\",(?=\"elements)"));
        static const QRegularExpression names(QStringLiteral("\"[A-Za-z]+\":")), marks(QStringLiteral("[][{}\",]+"));
        QStringList words;
        for (const QByteArray& text : std::exchange(m_sent, {})) {
            QString sent = QString::fromUtf8(text);
            if (const auto match = request.match(sent); match.hasMatch())
                m_cookie = match.captured(1).toUtf8();
            const QString name = sent.section(u'"', 1, 1);
            words.append((name + sent.remove(request).remove(names).replace(marks, QStringLiteral(" "))).simplified());
        }
        return words;
    }
    QByteArray cookie() const { return m_cookie; }

private:
    zel::MessageListenerMap m_listeners;
    QList<QByteArray> m_sent;
    QByteArray m_cookie;
    QExplicitlySharedDataPointer<iface::WritableObservableValue<bool>> m_connected{
        new iface::WritableObservableValue<bool>(true)};
};
