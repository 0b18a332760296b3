// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableListImpl.h>

#include <QtCore/QObject>

#include <boost/function.hpp>

#include <array>

namespace iface {

/// Turns the four signals of a list into calls of four functions.
///
/// Its parent or its maker owns it. It does not keep the list alive: whoever needs that holds a handle as well. Once
/// the list is gone nothing is called any more, and there may be no list at all. A function may do whatever an
/// observer may (see ObservableImpl), replace the list, or destroy the adapter; a function that is empty throws
/// `boost::bad_function_call` when its signal comes.
class ZEL_EXPORT ObservableListImplFunctorAdapter : public QObject
{
    Q_OBJECT

public:
    using ItemFunction = boost::function<void(QVariantList)>;
    using ChangeFunction =
        boost::function<void(ObservableListImpl::ChangeType::Type, QSharedPointer<ObservableListImpl::IndexMapper>)>;

    ObservableListImplFunctorAdapter(ObservableListImpl* model, ItemFunction added, ItemFunction updated,
                                     ItemFunction removed, ChangeFunction changed, QObject* parent = nullptr);
    ~ObservableListImplFunctorAdapter() override;

    /// Listens to another list, or to none.
    void setDataModel(ObservableListImpl* model);

public Q_SLOTS:
    void itemAdded(QVariantList indexPath);
    void itemUpdated(QVariantList indexPath);
    void itemRemoved(QVariantList indexPath);
    void itemsChanged(ObservableListImpl::ChangeType::Type eChangeType,
                      QSharedPointer<ObservableListImpl::IndexMapper> indexMapper);

private:
    std::array<QMetaObject::Connection, 4> m_connections;
    ItemFunction m_added;
    ItemFunction m_updated;
    ItemFunction m_removed;
    ChangeFunction m_changed;
};

} // namespace iface
