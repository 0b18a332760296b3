// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableListImpl.h>

#include <QtCore/QList>
#include <QtCore/QVariant>

namespace iface {

/// The base of lists that store their items. A subclass changes `m_list` and then fires what it did.
///
/// `T` travels in variants, so it is a type of the metatype system that can be copied and compared.
template <class T>
class BaseListImpl : public ObservableListImpl
{
public:
    /// For a path of an item the answer is 1 if the list is empty and 0 otherwise: nobody counts children of items.
    int childCount(const QVariantList& indexPath) const override;
    /// Invalid for anything but the path of an item that is there.
    QVariant data(const QVariantList& indexPath) const override;

protected:
    QList<T> m_list;
};

template <class T>
int BaseListImpl<T>::childCount(const QVariantList& indexPath) const
{
    if (indexPath.isEmpty())
        return static_cast<int>(m_list.size());
    return m_list.isEmpty() ? 1 : 0;
}

template <class T>
QVariant BaseListImpl<T>::data(const QVariantList& indexPath) const
{
    const int index = indexOfPath(indexPath);
    return index >= 0 && index < m_list.size() ? QVariant::fromValue(m_list.at(index)) : QVariant();
}

} // namespace iface
