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

ObservableListImplFunctorAdapter::~ObservableListImplFunctorAdapter()
{
    setDataModel(nullptr); // before the functions go: what ends with them may change the list
}

void ObservableListImplFunctorAdapter::setDataModel(ObservableListImpl* model)
{
    using List = ObservableListImpl;
    using Adapter = ObservableListImplFunctorAdapter;
    for (const QMetaObject::Connection& connection : std::exchange(m_connections, {}))
        disconnect(connection);
    if (!model)
        return;
    m_connections = {connect(model, &List::itemAdded, this, &Adapter::itemAdded),
                     connect(model, &List::itemUpdated, this, &Adapter::itemUpdated),
                     connect(model, &List::itemRemoved, this, &Adapter::itemRemoved),
                     connect(model, &List::itemsChanged, this, &Adapter::itemsChanged)};
}

// Each calls a copy: the function may destroy this.

void ObservableListImplFunctorAdapter::itemAdded(QVariantList indexPath)
{
    ItemFunction{m_added}(indexPath);
}

void ObservableListImplFunctorAdapter::itemUpdated(QVariantList indexPath)
{
    ItemFunction{m_updated}(indexPath);
}

void ObservableListImplFunctorAdapter::itemRemoved(QVariantList indexPath)
{
    ItemFunction{m_removed}(indexPath);
}

void ObservableListImplFunctorAdapter::itemsChanged(ObservableListImpl::ChangeType::Type eChangeType,
                                                    QSharedPointer<ObservableListImpl::IndexMapper> indexMapper)
{
    ChangeFunction{m_changed}(eChangeType, indexMapper);
}

} // namespace iface
