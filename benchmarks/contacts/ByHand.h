// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <memory>

class QSocketNotifier;

/// What a client that is written for this one purpose keeps of a contact.
struct HandRecord
{
    QString userId, handle, ppid, appVersion, displayName, personalMessage, currentStatus, avatarId, avatarMimeType,
        timeZone, countryCode;
    int platformVersion = 0;
    int clientVersion = 0;
    bool showBusy = false;
};

/// What an answer was: none of the list, a part of it, its end.
enum class Answer { Other, Part, Last };

/// Reads a message's JSON: ids into the list, or records into the hash. The text may be written to up to its capacity.
struct HandTarget
{
    QStringList ids;
    QHash<QString, HandRecord> records;
    bool wantsIds = true;
};
using HandDecoder = std::function<Answer(char* text, size_t size, size_t capacity, HandTarget& target)>;

HandDecoder decodeWithQt();
HandDecoder decodeWithSimdjson();

/// The least that follows contacts: a descriptor, a notifier, a decoder, a hash; no order, no observers, no changes.
/// One request is in flight at a time, of twenty keys, as the library has it.
class HandClient
{
public:
    /// Closes the descriptor, the service's object or a bare socket, at its end.
    HandClient(int descriptor, HandDecoder decode);
    ~HandClient();

    /// Asks for everything; `done` is called when the last record is there.
    void load(std::function<void()> done);
    qsizetype size() const { return m_target.records.size(); }

private:
    void send(const QByteArray& json);
    void read();
    void requestNext();

    const int m_descriptor;
    std::unique_ptr<QSocketNotifier> m_notifier;
    HandDecoder m_decode;
    std::function<void()> m_done;
    QByteArray m_buffer;
    HandTarget m_target;
    qsizetype m_requested = 0;
};
