// SPDX-License-Identifier: Apache-2.0
#include <zel/LiveListBase.h>

#include <iface/Logging.h>
#include <iface/Realm.h>
#include <iface/detail/MakeShared.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace zel {

LiveListBase::LiveListBase(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QString& type,
                           const QString& id)
    : LiveContainer(multiplexer, type, id)
    , m_retry([this] { requestListAll(); })
{
}

LiveListBase::~LiveListBase() = default;

void LiveListBase::dropUnderWay()
{
    m_retry.stop();
    beginTransfer(Transfer::None);
}

void LiveListBase::requestAgain()
{
    iface::Realm::postGuarded(guard(), [this] {
        m_retry.start();
        requestListAll();
    });
}

void LiveListBase::requestListAll() const
{
    send(iface::detail::makeShared<JsonWriter>(u"requestListAll"_s, u"zel"_s));
}

void LiveListBase::listAll(iface::JsonObjectReader)
{
    beginTransfer(Transfer::FullList);
    if (!m_retry.isActive())
        m_retry.start(); // sent unasked, and missed all the same if it does not come whole
}

void LiveListBase::listElements(iface::JsonObjectReader)
{
    beginTransfer(Transfer::Elements);
}

void LiveListBase::beginTransfer(Transfer transfer)
{
    m_transfer = transfer;
    dropReceived();
}

LiveListBase::Transfer LiveListBase::chunkTaken(bool last)
{
    if (m_transfer == Transfer::FullList) {
        if (last)
            m_retry.stop();
        else
            m_retry.start(); // the rest is on its way: only if it stops coming is it asked for again
    }
    return last ? std::exchange(m_transfer, Transfer::None) : Transfer::None;
}

void LiveListBase::logIgnored(const char* text, const QString& key) const
{
    ZEL_IFACE_LOG("LiveList", __LINE__, iface::LogLevel::Error, iface::LogCategory::General,
                  "List "_L1 + type() + u'/' + id() + QLatin1String(text) + key);
}

} // namespace zel
