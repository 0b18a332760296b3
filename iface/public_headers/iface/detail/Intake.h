// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Change.h>
#include <iface/Follower.h>

namespace iface {
class Round;
} // namespace iface

namespace iface::detail {

/// How a derived list takes in what changed, in the first step of a round, before anything is announced.
///
/// It notes the changes of the input, merged into one. Then, when it is the list's turn or as soon as somebody reads
/// it, what the list reads is brought up to date, and after that the list, with take(): so every list has taken in
/// everything whenever it is read, in whatever order lists hang on each other. While take() runs, the list is left
/// alone: another change of the input then counts as a Reset and leads to another take().
class ZEL_EXPORT Intake : public Follower
{
public:
    ~Intake() override;

    /// Follows from the state in which the input is now. Null: nothing.
    void follow(ObservableListImpl* input);
    /// Has everything taken in anew.
    void reset();
    /// Something else than the input's items makes the list another.
    void markBehind();
    /// To be called first by everything that reads the list.
    void catchUp() const
    {
        if (m_isBusy || !isAnyBehind())
            return;
        const_cast<Intake*>(this)->settle();
    }
    /// Nothing is taken in any more.
    void close();

    int inputCount() const;
    /// Grows with everything that is noted.
    unsigned generation() const { return m_generation; }
    /// Whether take() is running.
    bool isTaking() const { return m_isTaking; }
    /// Whether the input has changed since take() began; there will be another.
    bool isOvertaken() const { return m_pending.kind != Change::None; }

protected:
    explicit Intake(ObservableListImpl& list)
        : m_list(list)
    {
    }

    /// Takes the change in and notes what follows from it; None if only what made the list markBehind() has changed.
    virtual void take(const Change& change) = 0;
    /// Brings what take() reads besides the input up to date.
    virtual void settleOthers();
    /// The change, or a Reset if it tells of other items than a list that had `count` of them can have.
    Change fitting(const Change& change, int count) const;

private:
    friend class iface::Round;

    static bool isAnyBehind();
    void mark(const Change& change) override;
    void settle();
    bool mayTakeAgain();

    ObservableListImpl& m_list;
    ObservableListImpl* m_input = nullptr;
    Change m_pending;
    unsigned m_generation = 0;
    unsigned m_round = 0; ///< in which m_takes counts
    int m_takes = 0;
    bool m_isBehind = false;
    bool m_isBusy = false;
    bool m_isTaking = false;
    bool m_isClosed = false;
};

} // namespace iface::detail
