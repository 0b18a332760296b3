// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableImpl.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>

namespace iface {

/// The base of all observable lists, itself an empty one.
///
/// Items are addressed by an index path. All lists are flat: a path holds the item's index as its one element, and the
/// empty path is the list itself.
///
/// A list changes its items first and then calls the matching fire operation, change by change. Inside that call every
/// list that is derived from it takes the change in; then the specific signal comes, and after it whatever plain
/// observers hear (see ObservableImpl and Round); the list is kept alive throughout, and what handlers read is no
/// dependency of a tracked computation. A handler may do whatever an observer may. When it changes the list, that
/// change is announced there and then, in full, before the remaining handlers hear of the first: whoever mirrors a list
/// by index reads it again after a wholesale change, and must not change it while it mirrors. ListMirror does that, and
/// complains about a list that does not keep to its announcements.
///
/// IndexesChanged moves items and leaves them what they were; an item that changed as well is announced as updated,
/// too. That an item is announced as updated need not mean that it differs. Several changes of
/// which nobody has been told yet are announced as one: as IndexesChanged if all were moves, and a hundred at most; as
/// DataChanged, or an update of the one item, if all were updates; else as a Reset.
class ZEL_EXPORT ObservableListImpl : public ObservableImpl
{
    Q_OBJECT

public:
    struct ChangeType
    {
        enum Type {
            /// The whole content may be another: read everything again.
            Reset = 0,
            /// Items were dropped, added or moved, as the mapper tells; without one, read everything again.
            IndexesChanged = 1,
            /// Contents of several items changed in place, and no index moved. But a filtered list passes that on from
            /// its input, and may be longer or shorter by then: read everything again, the length as well.
            DataChanged = 2
        };
    };

    /// Tells where items went in a wholesale change: old index paths to new ones. It answers for every old index, and
    /// may be kept.
    class ZEL_EXPORT IndexMapper
    {
    public:
        IndexMapper() = default;
        virtual ~IndexMapper();

        /// Whether the item at `oldPath` still exists. If so, its new path goes to `newPath`, otherwise -1 to
        /// `removed`; either may be null. Paths that are empty, too long or below 0 were no item: false. So were those
        /// past the end, as far as a mapper knows where that was (an ItemMovedMapper does not).
        virtual bool newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const = 0;

    protected:
        /// What every mapper says of an item that stands at `newIndex` now, or nowhere if that is below 0.
        static bool answer(QVariantList* newPath, int* removed, int newIndex);

    private:
        Q_DISABLE_COPY_MOVE(IndexMapper)
    };

    ObservableListImpl();
    ~ObservableListImpl() override;

    virtual int childCount(const QVariantList&) const { return 0; }
    /// Of the empty path: whether there are items, as childCount() has it. Items have none.
    virtual bool hasChildren(const QVariantList& indexPath) const;
    virtual QString itemType(const QVariantList&) const { return QString(); }
    virtual QVariant data(const QVariantList&) const { return QVariant(); }
    /// The same for the item at an index, for those who read many; made of data() unless a list has a shorter way.
    virtual QVariant itemAt(int index) const;
    /// Whether the list announces a change of every item that anybody ever read. True, as a rule; a list that computes
    /// items on demand and forgets them does not, and whoever depends on its items has to track their reads.
    virtual bool announcesEveryReadItem() const { return true; }

    /// The path of the item at `index`.
    static QVariantList pathOf(int index);
    /// The index in a path of exactly one number, otherwise -1.
    static int indexOfPath(const QVariantList& indexPath);

    // To be called after the change has been made.
    void fireItemAdded(int index);
    void fireItemUpdated(int index);
    void fireItemRemoved(int index);
    void fireItemsChanged(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper);

Q_SIGNALS:
    // All come after the change; plain observers hear of it afterwards.
    void itemAdded(QVariantList indexPath);
    void itemUpdated(QVariantList indexPath);
    void itemRemoved(QVariantList indexPath);
    void itemsChanged(ObservableListImpl::ChangeType::Type eChangeType = ObservableListImpl::ChangeType::Reset,
                      QSharedPointer<ObservableListImpl::IndexMapper> indexMapper =
                          QSharedPointer<ObservableListImpl::IndexMapper>());
};

} // namespace iface
