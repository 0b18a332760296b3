// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableListImpl.h>

namespace iface {

/// The mapper of one move: the item was taken out at `from` and put back at `to`; the others close up and make room.
/// It knows no length, so any index from 0 maps.
class ZEL_EXPORT ItemMovedMapper final : public ObservableListImpl::IndexMapper
{
public:
    ItemMovedMapper(int from, int to);

    int from() const { return m_from; }
    int to() const { return m_to; }
    bool newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const override;

private:
    const int m_from;
    const int m_to;
};

} // namespace iface
