// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/RetryTimer.h>
#include <zel/detail/LiveContainer.h>
#include <zel/detail/LiveListIndex.h>

namespace zel {

/// What a LiveList does that does not depend on the type of its elements: asking for the list, and where a transfer
/// stands. See LiveList.
class ZEL_EXPORT LiveListBase : public detail::LiveContainer
{
public:
    /// Which of the service's elements belong to the list: all of them, or those whose key is not empty and does not
    /// stand before them already.
    enum class Keys { AsTheyCome, Distinct };

    ~LiveListBase() override;

    void listAll(iface::JsonObjectReader body) override;
    void listElements(iface::JsonObjectReader body) override;

protected:
    enum class Transfer { None, FullList, Elements };

    LiveListBase(const QSharedPointer<ListApiMultiplexer>& multiplexer, const QString& type, const QString& id);

    void dropUnderWay() override;
    /// Asks for the list in a later turn of the event loop.
    void requestAgain() override;

    /// A chunk has been taken. Answers what it has completed, if anything.
    Transfer chunkTaken(bool last);
    bool isTransferring() const { return m_transfer != Transfer::None; }
    /// Of all elements, which takes the place of what is known; else of some, which changes that.
    bool isFullList() const { return m_transfer == Transfer::FullList; }
    /// Whatever was under way is given up. None leaves nothing under way.
    void beginTransfer(Transfer transfer);

    /// A new transfer throws away what the one before has gathered.
    virtual void dropReceived() = 0;

    void logIgnored(const char* text, const QString& key) const;

    mutable detail::LiveListIndex m_index;
    mutable bool m_indexDirty = true;
    bool m_firstListPending = true;

private:
    void requestListAll() const;

    Transfer m_transfer = Transfer::None;
    iface::RetryTimer m_retry;
};

} // namespace zel
