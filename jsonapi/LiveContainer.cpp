// SPDX-License-Identifier: Apache-2.0
#include <zel/detail/LiveContainer.h>

using namespace Qt::StringLiterals;

namespace zel::detail {

LiveContainer::LiveContainer(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QString& type,
                             const QString& id)
    : m_multiplexer(multiplexer)
    , m_type(type)
    , m_id(id)
{
}

LiveContainer::~LiveContainer()
{
    m_multiplexer->removeHandler(this);
}

void LiveContainer::start()
{
    m_connectionObserver = std::make_unique<iface::ObserverFunctorAdapter>([this] { handleConnectionChanged(); });
    m_multiplexer->addHandler(m_type, m_id, this);
    m_multiplexer->pipe()->isConnected().impl()->addObserver(m_connectionObserver.get());
}

void LiveContainer::stop()
{
    m_multiplexer->removeHandler(this);
    m_connectionObserver.reset();
    dropUnderWay();
}

void LiveContainer::send(const QSharedPointer<JsonWriter>& message) const
{
    message->addAttribute(u"type"_s, m_type);
    if (!m_id.isEmpty())
        message->addAttribute(u"id"_s, m_id);
    m_multiplexer->send(message);
}

void LiveContainer::handleConnectionChanged()
{
    dropUnderWay();
    if (m_multiplexer->pipe()->isConnected().getValue())
        requestAgain();
}

iface::JsonArrayReader LiveContainer::elementsOf(const iface::JsonObjectReader& body)
{
    return body["elements"].array();
}

bool LiveContainer::isLast(const iface::JsonObjectReader& body)
{
    bool last = false;
    body.readBool("last", last);
    return last;
}

QString LiveContainer::cookieOf(const iface::JsonObjectReader& body)
{
    QString cookie;
    body.readString("cookie", cookie);
    return cookie;
}

} // namespace zel::detail
