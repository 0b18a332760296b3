// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableListImpl.h>

#include <QtCore/QList>

namespace iface {

/// A mapper made of the new index of each old one, -1 for an item that is gone.
class ZEL_EXPORT PrecomputedMapper : public ObservableListImpl::IndexMapper
{
public:
    explicit PrecomputedMapper(QList<int> newIndexes);

    bool newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const override;

private:
    const QList<int> m_map;
};

} // namespace iface
