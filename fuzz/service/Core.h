// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Messages.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>

/// The other end of the platform object: says what the input makes it say, and answers properly when told to.
///
/// The target brings its own pps_object_open(), which gives the library one end of a pair of sockets and the core the
/// other: nothing but the calling thread takes part, so an input always does the same.
class Core
{
public:
    static Core& instance();

    /// The library's end of a new pair; the earlier one is closed.
    int open();

    void send(const QByteArray& record);
    void sendMessage(const QByteArray& json) { send("@platform\ndat:json:" + json + '\n'); }
    void sendMessage(Line line) { sendMessage(messageOf(line, m_learned)); }

    /// Reads what the library has written; the last of it is kept to be answered.
    void takeRequests();
    /// Answers what was kept the way a core service does that has some contacts. False when nothing was there.
    bool answerRequests(int contacts);
    /// Tells everything anew, as a core service does that has come back: contacts a and b, one item and one icon.
    void announceEverything();
    /// Forgets about the input.
    void reset();

private:
    /// As the library writes it.
    struct Request
    {
        QByteArray type;
        QByteArray body;
    };

    void take(const QByteArray& record);
    void answer(const Request& request);
    void answerList(const QByteArray& list);
    void answerElements(const QByteArray& body);
    void tell(const char* type, const QByteArray& body);
    void tellElements(const char* type, const QByteArray& list, const QByteArray& elements);
    void tellChunk(const QByteArray& list, const QByteArray& elements);

    int m_descriptor = -1;
    int m_contacts = 0;
    int m_itemsMade = 0;
    Learned m_learned;
    QList<Request> m_requests;
};
