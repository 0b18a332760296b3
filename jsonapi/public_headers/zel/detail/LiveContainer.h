// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObserverFunctorAdapter.h>
#include <zel/ListApiHandler.h>
#include <zel/ListApiMultiplexer.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <memory>

namespace zel::detail {

/// What live lists and live maps have in common: which list of the core service they mirror, how their requests are
/// completed, and that they hear when the pipe loses its connection and finds it again.
class ZEL_EXPORT LiveContainer : public ListApiHandler
{
public:
    ~LiveContainer() override;
    LiveContainer(const LiveContainer&) = delete;
    LiveContainer& operator=(const LiveContainer&) = delete;

    QString type() const { return m_type; }
    QString id() const { return m_id; }

    /// Adds the list's type, and its id if it has one, to a request and sends it.
    void send(const QSharedPointer<JsonWriter>& message) const;

    /// Drops what was under way, and asks again for what the container holds once the pipe is connected.
    void handleConnectionChanged();

protected:
    LiveContainer(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QString& type, const QString& id);

    /// Registers for messages and the connection; the constructor cannot, before the whole object is there.
    void start();
    /// Takes the container off the multiplexer, and drops what is posted and under way. The first thing that the
    /// destructor of the whole object does: what goes with it may spin an event loop, in which messages arrive.
    void stop();

    /// Forgets what was half received, and that anything was requested.
    virtual void dropUnderWay() = 0;
    virtual void requestAgain() = 0;

    /// An object that lives as long as the container is started: guards what is posted.
    QObject* guard() const { return m_connectionObserver.get(); }

    static iface::JsonArrayReader elementsOf(const iface::JsonObjectReader& body);
    static bool isLast(const iface::JsonObjectReader& body);
    static QString cookieOf(const iface::JsonObjectReader& body);

private:
    const QSharedPointer<ListApiMultiplexer> m_multiplexer;
    const QString m_type;
    const QString m_id;
    std::unique_ptr<iface::ObserverFunctorAdapter> m_connectionObserver;
};

} // namespace zel::detail
