// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/services/Lists.h>
#include <simulator/wire/Outbox.h>
#include <simulator/services/Session.h>
#include <simulator/wire/Wire.h>
#include <simulator/world/World.h>

#include <QtCore/QJsonValue>

#include <functional>
#include <map>
#include <memory>

namespace zelcore {

/// What everyone who answers requests shares: the world, the way out, and who is connected.
struct ServiceContext
{
    World& world;
    Outbox& outbox;
    Lists lists;
    std::map<int, std::shared_ptr<Session>> sessions;

    ServiceContext(World& theWorld, Outbox& theOutbox)
        : world(theWorld)
        , outbox(theOutbox)
        , lists(theWorld)
    {
    }

    /// Sends a message to every application.
    void broadcast(QLatin1String type, const QByteArray& body)
    {
        // A slot that watches the traffic may make applications come and go.
        const auto everyone = sessions;
        for (const auto& [client, session] : everyone)
            outbox.send(client, type, body);
    }

    /// Sends elements of a list to one application, in as many messages as they need; none for no elements.
    void sendElements(int client, QLatin1String type, const QString& list, const QList<QByteArray>& elements)
    {
        if (elements.isEmpty())
            return;
        for (const QByteArray& body : wire::packElements(elements, list, false))
            outbox.send(client, type, body);
    }
};

/// Answers one kind of request. Empty, or the sentence that says why the request is refused.
struct RequestHandler
{
    const char* texts; ///< The members of the body, between blanks, that must be there and be texts.
    std::function<QString(Session&, const QJsonObject&)> answer;
};

/// A member of a body that is a text; the handler's row has seen to that.
inline QString textOf(const QJsonObject& body, QLatin1String key)
{
    return body.value(key).toString();
}

} // namespace zelcore
