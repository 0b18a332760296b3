// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Change.h>
#include <iface/Follower.h>
#include <iface/ObservableListImpl.h>

#include <QtCore/QPointer>

namespace iface {
class Round;
} // namespace iface

namespace iface::detail {

class FirstException;

/// A list made of another list, its input: how it takes in what changed, in the first step of a round, before anything
/// is announced.
///
/// It notes the changes of the input, merged into one. Then, when it is the list's turn or as soon as somebody reads
/// it, what the list reads is brought up to date, and after that the list, with take(): so every list has taken in
/// everything whenever it is read, in whatever order lists hang on each other. While take() runs, the list is left
/// alone: another change of the input then counts as a Reset and leads to another take().
///
/// The destructor of a subclass calls close() first of all: whatever goes there may run anything.
class ZEL_EXPORT DerivedList : public ObservableListImpl, private Follower
{
public:
    ~DerivedList() override;

    int childCount(const QVariantList& indexPath) const final;
    QVariant data(const QVariantList& indexPath) const final;
    QVariant itemAt(int index) const final;

protected:
    DerivedList() = default;

    /// What the list is made of, which it holds; null reads as empty.
    const QExplicitlySharedDataPointer<ObservableListImpl>& input() const { return m_input; }
    int inputCount() const;
    QVariant inputItem(int index) const;
    /// Follows an input from the state in which that is now.
    void follow(ObservableListImpl* input);
    /// Has everything taken in anew, and announced as that.
    void reset();
    /// What was taken in was so in part: with the next change all of it is taken in anew, and announced as a Reset.
    void takeInAnew() { m_isBroken = true; }
    /// Nothing is taken in any more.
    void close();
    /// Something else than the input's items makes the list another.
    void markBehind();
    /// To be called first by everything that reads the list, which keeps what it returns: what is taken in may drop the
    /// last handle of the list.
    Hold catchUp() const;

    /// Grows with everything that is noted.
    unsigned generation() const { return m_generation; }
    /// Whether take() is running.
    bool isTaking() const { return m_takingFrom > 0; }
    /// Whether the input has changed since take() began; there will be another.
    bool isOvertaken() const { return m_pending.kind != Change::None; }
    /// The change, or a Reset if it tells of other items than an input that had `before` of them can have.
    Change fitting(const Change& change, int before) const;
    /// What was thrown while changes are taken in. It goes on when all has been announced.
    static FirstException& thrown();
    /// Keeps what was thrown when an item was read or judged; to be called where it is caught. Only where memory runs
    /// out that says nothing of the item.
    void itemThrew();

private:
    friend class iface::Round;

    /// Of the items, and one of them, or nothing where none is: after the list has caught up.
    virtual int count() const = 0;
    virtual QVariant item(int index) const = 0;
    /// Takes the change in and notes what follows from it; None if only what made the list markBehind() has changed.
    virtual void take(const Change& change) = 0;
    /// Brings what take() reads besides the input up to date.
    virtual void settleOthers() {}

    void mark(const Change& change) override;
    void takePending();
    Hold settle();
    bool mayTakeAgain();

    QExplicitlySharedDataPointer<ObservableListImpl> m_input;
    const QPointer<const QObject> m_self{this}; ///< so that a Hold needs no memory
    Change m_pending;
    unsigned m_generation = 0;
    unsigned m_settledAt = 0; ///< t_timesBehind when all that this list reads was last up to date
    unsigned m_countedIn = 0; ///< where m_takes counts
    int m_takes = 0;
    int m_takingFrom = 0; ///< while take() runs: a read at this depth of inputs, or deeper, is made for its sake
    DerivedList* m_previousInLine = nullptr; ///< of those behind
    DerivedList* m_nextInLine = nullptr;
    bool m_isInLine = false;
    bool m_isBehind = false;
    bool m_isBroken = false; ///< what it shows is not all made of one state of its input
    bool m_isBusy = false;
    mutable bool m_isHalfRead = false; ///< before it had taken in what it has to
    bool m_isClosed = false;
};

} // namespace iface::detail
