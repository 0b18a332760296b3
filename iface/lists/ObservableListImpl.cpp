// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableListImpl.h>

#include <iface/Change.h>

#include <utility>

namespace iface {

namespace {

// Under the names that the signals use, for whoever connects across threads by those.
[[maybe_unused]] const int changeTypeId =
    qRegisterMetaType<ObservableListImpl::ChangeType::Type>("ObservableListImpl::ChangeType::Type");
[[maybe_unused]] const int mapperId = qRegisterMetaType<QSharedPointer<ObservableListImpl::IndexMapper>>(
    "QSharedPointer<ObservableListImpl::IndexMapper>");

} // namespace

ObservableListImpl::IndexMapper::~IndexMapper() = default;

ObservableListImpl::ObservableListImpl() = default;
ObservableListImpl::~ObservableListImpl() = default;

bool ObservableListImpl::hasChildren(const QVariantList& indexPath) const
{
    return indexPath.isEmpty() && childCount(indexPath) > 0;
}

QVariant ObservableListImpl::itemAt(int index) const
{
    // Reads come in long rows: the path is made once, and again only for reads within a read.
    [[gnu::tls_model("initial-exec")]] static thread_local QVariantList spare = pathOf(0);
    QVariantList path = std::exchange(spare, {});
    if (path.isEmpty() || !path.isDetached())
        path = pathOf(index);
    else
        path[0] = index;
    QVariant item = data(path);
    spare = std::move(path);
    return item;
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

void ObservableListImpl::fireItemAdded(int index)
{
    note({Change::Added, index});
}

void ObservableListImpl::fireItemUpdated(int index)
{
    note({Change::Updated, index});
}

void ObservableListImpl::fireItemRemoved(int index)
{
    note({Change::Removed, index});
}

void ObservableListImpl::fireItemsChanged(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper)
{
    note(Change::wholesale(type, mapper));
}

} // namespace iface
