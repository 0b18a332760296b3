// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/RawServer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

/// An application that knows nothing but the socket and the texts.
class RawApplication : public RawEnd
{
public:
    explicit RawApplication(const QString& root) { connectTo(root, "/services/zelcore/platform"); }

    bool connectTo(const QString& root, const QByteArray& object)
    {
        disconnect();
        descriptor = RawEnd::connectTo(root + QLatin1String(object));
        if (descriptor == -1)
            return false;
        m_notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { read(); });
        return true;
    }

    void disconnect()
    {
        m_notifier.reset();
        close();
    }

    using RawEnd::send;
    bool send(const QByteArray& type, const QByteArray& body) const
    {
        return send("msg::zel\ndat:json:{\"" + type + "\":" + body + "}\n");
    }

    /// Says that it starts, as the library does; it is told nothing unasked then.
    bool begin() const { return send("tpaApi", "{\"apiType\":\"Qt\"}"); }

    /// The body of the first message of this type that has not been taken yet, waited for; what came before it stays.
    QJsonObject take(const char* type)
    {
        const QString wanted = QString::fromLatin1(type);
        auto found = messages.end();
        const bool came = waitFor([&] {
            found = std::find_if(messages.begin(), messages.end(),
                                 [&](const QJsonObject& message) { return message.contains(wanted); });
            return found != messages.end();
        });
        if (!came)
            return {{QStringLiteral("never came"), wanted}};
        const QJsonObject body = found->value(wanted).toObject();
        messages.erase(found);
        return body;
    }

    /// Waits for the answer to something that is asked for now: everything sent before is done by then.
    void synchronize()
    {
        const QString mark = QStringLiteral("mark %1").arg(++m_marks);
        send("requestEcoId", "{\"ppid\":\"" + mark.toUtf8() + "\"}");
        while (take("requestEcoIdResponse").value(QLatin1String("ppid")).toString(mark) != mark) {
        }
    }

    /// The types of everything that has come and was not taken.
    QStringList drain()
    {
        synchronize();
        QStringList types;
        for (const QJsonObject& message : std::exchange(messages, {}))
            types.append(message.keys().value(0));
        return types;
    }

    /// Looks again after every event; looking every few milliseconds would make thousands of messages slow.
    template <typename Condition>
    static bool waitFor(Condition condition)
    {
        QTimer late;
        late.setSingleShot(true);
        late.start(5000);
        while (!condition()) {
            if (!late.isActive())
                return false;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return true;
    }

    std::function<void(const QByteArray&)> heard = [](const QByteArray&) {}; ///< Called with each record.
    QList<QByteArray> records;                                               ///< Everything that came.
    QList<QJsonObject> messages;                                             ///< What was readable of it.
    qsizetype unreadable = 0;
    bool closed = false;

private:
    void read()
    {
        QByteArray record(65536, Qt::Uninitialized);
        const ssize_t count = ::recv(descriptor, record.data(), size_t(record.size()), MSG_DONTWAIT);
        if (count <= 0) {
            m_notifier->setEnabled(false);
            closed = true;
            return;
        }
        record.truncate(count);
        records.append(record);
        const QByteArray head = "@platform\ndat:json:";
        const QJsonDocument document = QJsonDocument::fromJson(record.mid(head.size()));
        if (record.startsWith(head) && record.endsWith('\n') && document.object().size() == 1)
            messages.append(document.object());
        else
            ++unreadable;
        heard(record);
    }

    int m_marks = 0;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
