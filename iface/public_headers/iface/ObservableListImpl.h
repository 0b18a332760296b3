// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableImpl.h>

#include <QSharedPointer>
#include <QString>
#include <QVariant>

namespace iface {

struct ListChange;

/// The base of all observable lists, itself an empty one.
///
/// Items are addressed by an index path. All lists are flat: a path holds the item's index as its one element, and the
/// empty path is the list itself.
///
/// A list changes its items first and then calls the matching fire operation, at once, change by change. Inside that
/// call those hear first who follow the list as a LightObserver (derived lists do), then come the specific signal and
/// whatever plain observers hear (see ObservableImpl); the list is kept alive throughout, and what handlers read is no
/// dependency of a tracked computation. A handler may do whatever an observer may. When it changes the list, that
/// change is announced there and then, in full, before the remaining handlers hear of the first: whoever mirrors a list
/// by index reads it again after a wholesale change, and must not change it while it mirrors.
class ZEL_EXPORT ObservableListImpl : public ObservableImpl
{
    Q_OBJECT

public:
    struct ChangeType
    {
        enum Type {
            /// The whole content may be another: read everything again.
            Reset = 0,
            /// Items were dropped, added or moved, as the mapper tells.
            IndexesChanged = 1,
            /// Contents of several items changed in place; no index moved.
            DataChanged = 2
        };
    };

    /// Tells where items went in a wholesale change: old index paths to new ones.
    class ZEL_EXPORT IndexMapper
    {
    public:
        IndexMapper() = default;
        virtual ~IndexMapper();

        /// Whether the item at `oldPath` still exists. If so, its new path goes to `newPath`, otherwise -1 to
        /// `removed`; either may be null. Paths that are empty, too long or out of range were no item: false.
        virtual bool newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const = 0;

    private:
        Q_DISABLE_COPY_MOVE(IndexMapper)
    };

    ObservableListImpl();
    ~ObservableListImpl() override;

    virtual int childCount(const QVariantList& indexPath) const;
    virtual bool hasChildren(const QVariantList& indexPath) const;
    virtual QString itemType(const QVariantList& indexPath) const;
    virtual QVariant data(const QVariantList& indexPath) const;
    /// The same for the item at an index, for those who read many. Whoever overrides it overrides data() as well.
    virtual QVariant itemAt(int index) const;
    /// Whether the list announces a change of every item that anybody ever read. True, as a rule; a list that computes
    /// items on demand and forgets them does not, and whoever depends on its items has to track their reads.
    virtual bool announcesEveryReadItem() const;

    /// The path of the item at `index`.
    static QVariantList pathOf(int index);
    /// The index in a path of exactly one number, otherwise -1.
    static int indexOfPath(const QVariantList& indexPath);

    /// How many changes have been announced so far, those under way included. Who follows a list by index compares it
    /// with what they have heard: see detail::ListFollower.
    unsigned announcedChanges() const { return m_announcedChanges; }

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

private:
    void fire(const ListChange& change);
    void emitSignal(const ListChange& change);

    unsigned m_announcedChanges = 0;
};

/// What a list announces, as its four signals say it.
struct ListChange
{
    enum Kind { ItemAdded, ItemUpdated, ItemRemoved, ItemsChanged };

    Kind kind;
    int index;                                                        ///< of the item
    ObservableListImpl::ChangeType::Type type = {};                   ///< of ItemsChanged
    QSharedPointer<ObservableListImpl::IndexMapper> mapper = nullptr; ///< of ItemsChanged
};

} // namespace iface
