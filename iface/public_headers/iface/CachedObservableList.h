// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableList.h>
#include <iface/ObservableTracker.h>
#include <iface/detail/ListFollower.h>

#include <QList>
#include <QSharedPointer>

#include <boost/function.hpp>

#include <exception>
#include <optional>
#include <utility>

namespace iface {

/// A full copy of an input list, with functions that are called with old and new contents before each announcement.
///
/// It starts without an input, empty, and holds the one it is given until the next. Each change of the input is taken
/// over, told to the matching function (which does nothing unless one is set), and then announced just as the input
/// announced it; reading answers from the copy. A list whose input changed behind its back, by a handler that edits the
/// input before this list heard of the first change, reads everything again and announces a Reset.
///
/// A function may do whatever an observer may. When it changes the input, the change that it was called for is
/// announced first and then the other, so that whoever listens can follow. When it throws (an empty one throws
/// `boost::bad_function_call`) the change is announced, and then the exception goes on. One thread.
template <class T>
class CachedObservableList : public ObservableListImpl
{
public:
    using ItemFunction = boost::function<void(int, const T&)>;
    /// Gets the index, the old item, the new one.
    using UpdateFunction = boost::function<void(int, const T&, const T&)>;
    /// Gets the old contents, then the new ones.
    using ChangeFunction = boost::function<void(ChangeType::Type, QSharedPointer<IndexMapper>, QList<T>, QList<T>)>;

    CachedObservableList();
    explicit CachedObservableList(const ObservableList<T>& input)
        : CachedObservableList()
    {
        setInput(input);
    }

    /// Replaces the content: a change of kind Reset. A handle on nothing makes the list empty.
    void setInput(const ObservableList<T>& input);

    void setAddFunction(ItemFunction function) { m_addFunction = std::move(function); }
    void setRemoveFunction(ItemFunction function) { m_removeFunction = std::move(function); }
    void setUpdateFunction(UpdateFunction function) { m_updateFunction = std::move(function); }
    void setChangeFunction(ChangeFunction function) { m_changeFunction = std::move(function); }

    int childCount(const QVariantList& indexPath) const override;
    bool hasChildren(const QVariantList& indexPath) const override;
    QVariant data(const QVariantList& indexPath) const override;
    QVariant itemAt(int index) const override;

private:
    struct Change
    {
        void (CachedObservableList::*fire)(int) = nullptr; ///< null for a wholesale change
        int index = -1;
        ChangeType::Type type = ChangeType::Reset;
        QSharedPointer<IndexMapper> mapper;
    };

    class Input : public detail::ListFollower
    {
    public:
        explicit Input(CachedObservableList* owner)
            : m_owner(owner)
        {
        }

    protected:
        void heard(const ListChange& change, bool isNext) override { m_owner->takeIn(change, isNext); }

    private:
        CachedObservableList* const m_owner;
    };

    void takeIn(const ListChange& change, bool isNext);
    void handleRowItemAdded(int index);
    void handleRowItemUpdated(int index);
    void handleRowItemRemoved(int index);
    void handleRowItemsChanged(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper);

    bool settle();
    bool begin(int index, int growth);
    std::optional<T> read(int index);
    void resynchronise() { handleRowItemsChanged(ChangeType::Reset, nullptr); }
    template <class Call>
    void tellAndAnnounce(const Announcement& announcement, Change change, Call call);
    void announceOutstanding();

    ObservableList<T> m_input;
    Input m_inputObserver;
    QList<T> m_cache;
    ItemFunction m_addFunction;
    ItemFunction m_removeFunction;
    UpdateFunction m_updateFunction;
    ChangeFunction m_changeFunction;
    /// What the copy shows already and nobody has been told: set while one of the functions runs.
    std::optional<Change> m_outstanding;
    std::exception_ptr m_thrown; ///< while that was announced
    int m_changesBegun = 0;
    bool m_isTakingIn = false; ///< a change has been heard of and the copy does not show it yet
};

} // namespace iface

#include <iface/detail/CachedObservableList-inl.h>
