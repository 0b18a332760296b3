// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableListImplFunctorAdapter.h>

#include <utility>

namespace iface {

ObservableListImplFunctorAdapter::ObservableListImplFunctorAdapter(ObservableListImpl* model, ItemFunction added,
                                                                   ItemFunction updated, ItemFunction removed,
                                                                   ChangeFunction changed, QObject* parent)
    : QObject(parent)
    , m_added(std::move(added))
    , m_updated(std::move(updated))
    , m_removed(std::move(removed))
    , m_changed(std::move(changed))
{
    setDataModel(model);
}

void ObservableListImplFunctorAdapter::setDataModel(ObservableListImpl* model)
{
    using List = ObservableListImpl;
    using Adapter = ObservableListImplFunctorAdapter;
    if (m_model) {
        disconnect(m_model, &List::itemAdded, this, &Adapter::itemAdded);
        disconnect(m_model, &List::itemUpdated, this, &Adapter::itemUpdated);
        disconnect(m_model, &List::itemRemoved, this, &Adapter::itemRemoved);
        disconnect(m_model, &List::itemsChanged, this, &Adapter::itemsChanged);
    }
    m_model = model;
    if (!model)
        return;
    connect(model, &List::itemAdded, this, &Adapter::itemAdded);
    connect(model, &List::itemUpdated, this, &Adapter::itemUpdated);
    connect(model, &List::itemRemoved, this, &Adapter::itemRemoved);
    connect(model, &List::itemsChanged, this, &Adapter::itemsChanged);
}

ObservableListImpl* ObservableListImplFunctorAdapter::dataModel() const
{
    return m_model;
}

// Each calls a copy: the function may destroy this.

void ObservableListImplFunctorAdapter::itemAdded(QVariantList indexPath)
{
    const ItemFunction function = m_added;
    function(indexPath);
}

void ObservableListImplFunctorAdapter::itemUpdated(QVariantList indexPath)
{
    const ItemFunction function = m_updated;
    function(indexPath);
}

void ObservableListImplFunctorAdapter::itemRemoved(QVariantList indexPath)
{
    const ItemFunction function = m_removed;
    function(indexPath);
}

void ObservableListImplFunctorAdapter::itemsChanged(ObservableListImpl::ChangeType::Type eChangeType,
                                                    QSharedPointer<ObservableListImpl::IndexMapper> indexMapper)
{
    const ChangeFunction function = m_changed;
    function(eChangeType, indexMapper);
}

} // namespace iface
