// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableListImpl.h>

#include <iface/ItemMovedMapper.h>
#include <iface/ObservableListImplFunctorAdapter.h>
#include <iface/PrecomputedMapper.h>

#include <QMetaMethod>

#include <utility>

namespace iface {

namespace {

// Under the names that the signals use, for whoever connects across threads by those.
[[maybe_unused]] const int changeTypeId =
    qRegisterMetaType<ObservableListImpl::ChangeType::Type>("ObservableListImpl::ChangeType::Type");
[[maybe_unused]] const int mapperId = qRegisterMetaType<QSharedPointer<ObservableListImpl::IndexMapper>>(
    "QSharedPointer<ObservableListImpl::IndexMapper>");

// The answer of every mapper: a new index, or -1 for an item that is gone or never was.
bool answer(QVariantList* newPath, int* removed, int newIndex)
{
    if (newIndex < 0) {
        if (removed)
            *removed = -1;
        return false;
    }
    if (newPath)
        *newPath = ObservableListImpl::pathOf(newIndex);
    return true;
}

/// To ask whether a change need be put into a signal's words at all.
const QMetaMethod& signalOf(ListChange::Kind kind)
{
    // In the order of the kinds.
    static const QMetaMethod known[] = {QMetaMethod::fromSignal(&ObservableListImpl::itemAdded),
                                        QMetaMethod::fromSignal(&ObservableListImpl::itemUpdated),
                                        QMetaMethod::fromSignal(&ObservableListImpl::itemRemoved),
                                        QMetaMethod::fromSignal(&ObservableListImpl::itemsChanged)};
    return known[kind];
}

} // namespace

ObservableListImpl::IndexMapper::~IndexMapper() = default;

ObservableListImpl::ObservableListImpl() = default;
ObservableListImpl::~ObservableListImpl() = default;

int ObservableListImpl::childCount(const QVariantList&) const
{
    return 0;
}

bool ObservableListImpl::hasChildren(const QVariantList&) const
{
    return false;
}

QString ObservableListImpl::itemType(const QVariantList&) const
{
    return QString();
}

QVariant ObservableListImpl::data(const QVariantList&) const
{
    return QVariant();
}

QVariant ObservableListImpl::itemAt(int index) const
{
    return data(pathOf(index));
}

bool ObservableListImpl::announcesEveryReadItem() const
{
    return true;
}

QVariantList ObservableListImpl::pathOf(int index)
{
    return QVariantList(1, QVariant(index));
}

int ObservableListImpl::indexOfPath(const QVariantList& indexPath)
{
    if (indexPath.size() != 1)
        return -1;
    bool isNumber = false;
    const int index = indexPath.first().toInt(&isNumber);
    return isNumber ? index : -1;
}

void ObservableListImpl::fire(const ListChange& change)
{
    ++m_announcedChanges;
    Announcement announcement(*this);
    tellLightObservers(announcement, change);
    if (announcement.isAlive() && isSignalConnected(signalOf(change.kind)))
        emitSignal(change);
    if (announcement.isAlive())
        doEmit(announcement);
}

void ObservableListImpl::emitSignal(const ListChange& change)
{
    switch (change.kind) {
    case ListChange::ItemAdded:
        Q_EMIT itemAdded(pathOf(change.index));
        break;
    case ListChange::ItemUpdated:
        Q_EMIT itemUpdated(pathOf(change.index));
        break;
    case ListChange::ItemRemoved:
        Q_EMIT itemRemoved(pathOf(change.index));
        break;
    case ListChange::ItemsChanged:
        Q_EMIT itemsChanged(change.type, change.mapper);
        break;
    }
}

void ObservableListImpl::fireItemAdded(int index)
{
    fire({ListChange::ItemAdded, index});
}

void ObservableListImpl::fireItemUpdated(int index)
{
    fire({ListChange::ItemUpdated, index});
}

void ObservableListImpl::fireItemRemoved(int index)
{
    fire({ListChange::ItemRemoved, index});
}

void ObservableListImpl::fireItemsChanged(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper)
{
    fire({ListChange::ItemsChanged, -1, type, mapper});
}

PrecomputedMapper::PrecomputedMapper(QList<int> newIndexes)
    : m_map(std::move(newIndexes))
{
}

bool PrecomputedMapper::newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const
{
    const int index = ObservableListImpl::indexOfPath(oldPath);
    return answer(newPath, removed, index >= 0 && index < m_map.size() ? m_map.at(index) : -1);
}

ItemMovedMapper::ItemMovedMapper(int from, int to)
    : m_from(from)
    , m_to(to)
{
}

bool ItemMovedMapper::newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const
{
    const int index = ObservableListImpl::indexOfPath(oldPath);
    if (index < 0)
        return answer(newPath, removed, -1);
    if (index == m_from)
        return answer(newPath, removed, m_to);
    const int closedUp = index > m_from ? index - 1 : index;
    return answer(newPath, removed, closedUp >= m_to ? closedUp + 1 : closedUp);
}

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
