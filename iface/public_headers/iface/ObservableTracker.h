// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableSet.h>
#include <iface/detail/MakeShared.h>

#include <QtCore/QSharedPointer>

#include <utility>

namespace iface {

/// Records which observables a piece of code reads.
///
/// Handles of lists and maps, getValue() and toList() call getterCalled(), and what they are implemented with does not;
/// while runAndMonitor() runs something on the same thread, that is recorded, and otherwise it costs a look at one
/// thread-local pointer. Each tracked computation sees only its own
/// reads: those of a computation nested in it are not added to it. Announcements suspend tracking, so reactions of
/// observers are no dependencies; code that reads without depending says so with runUntracked().
class ZEL_EXPORT ObservableTracker
{
public:
    /// To be called by what observables are read through. Observables that nobody counts are passed over.
    static void getterCalled(const Observable* observable);

    /// What takes note of this thread's reads; null when nothing is tracked.
    static ReadRecorder* currentGetterCalledSet();
    /// Replaces that and returns what it was. Prefer the operations below: they put back what they replace.
    static ReadRecorder* setCurrentGetterCalledSet(ReadRecorder* recorder);

    /// Calls `callable` and returns everything that it read, whatever it read it through. When it throws, the
    /// exception goes on to the caller and tracking is as it was before.
    template <class Callable>
    static QSharedPointer<ObservableSet> runAndMonitor(Callable&& callable);

    /// The same with a recorder of the caller's, such as an ObservableSet that is used again and again. Answers
    /// whether tracking was in order to the end.
    template <class Callable>
    static bool runInto(ReadRecorder* recorder, Callable&& callable);

    /// Calls `callable` with nothing recorded and returns its result.
    template <class Callable>
    static decltype(auto) runUntracked(Callable&& callable);

    /// Nothing is recorded on this thread while one of these lives. They end in the reverse order of their making.
    class ZEL_EXPORT Suspension
    {
    public:
        Suspension()
            : Suspension(nullptr)
        {
        }
        ~Suspension();

    private:
        Q_DISABLE_COPY_MOVE(Suspension)
        friend class ObservableTracker;
        /// Reads are for this recorder instead.
        explicit Suspension(ReadRecorder* recorder);

        ReadRecorder* const m_suspended;
    };

private:
    static void reportNullSet(int line);
};

template <class Callable>
QSharedPointer<ObservableSet> ObservableTracker::runAndMonitor(Callable&& callable)
{
    auto set = detail::makeShared<ObservableSet>();
    const bool taken = runInto(set.data(), std::forward<Callable>(callable));
    return taken ? set : QSharedPointer<ObservableSet>();
}

template <class Callable>
bool ObservableTracker::runInto(ReadRecorder* recorder, Callable&& callable)
{
    const Suspension ofOuter(recorder);
    if (!recorder)
        reportNullSet(82);
    std::forward<Callable>(callable)();
    if (currentGetterCalledSet())
        return true;
    // Somebody has taken the recorder away and not put it back. Once for the result that is missing, once for the
    // set that is to be given back; that nothing was tracked around an outermost run is no fault and no line.
    reportNullSet(88);
    reportNullSet(94);
    return false;
}

template <class Callable>
decltype(auto) ObservableTracker::runUntracked(Callable&& callable)
{
    const Suspension untracked;
    return std::forward<Callable>(callable)();
}

} // namespace iface
