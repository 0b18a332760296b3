// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Follower.h>
#include <iface/Observable.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <atomic>
#include <vector>

namespace iface {

class ChangedKeys;
struct Change;
struct MapChange;

/// The base of all observables that announce their changes with a signal.
///
/// It has no parent and must not get one: only the reference count rules its life. Changes are announced at once,
/// inside notifyObservers(): first everything that is derived from this takes the change in, then the receivers of
/// observableChanged() are called, in the order in which they connected, and then those of what is derived (see Round).
/// Observers of another thread hear through their event loop. The observable is kept alive for the whole announcement,
/// and what observers read meanwhile is no dependency of a computation that is being tracked on this thread.
///
/// Change first, then notify: an observer may read anything, and finds everything in agreement. It may also add and
/// remove observers, change the observable again (that change is announced there and then, in full), drop the last
/// handle, destroy an observable that is not counted, spin an event loop, or throw. What is thrown reaches the caller
/// of notifyObservers() when all has been announced; whether later receivers of the same signal were called is not
/// promised.
///
/// Whoever begins to observe hears of what changes from then on. He may also hear of a change that the round under way
/// has yet to announce, and that he could read already: a list then announces it as a Reset, so that nobody takes it in
/// twice; a key of a map, or a plain change, is announced as it is, which does no harm.
///
/// Emitting the signal itself reaches its receivers and nobody else. What follows an observable (derived lists and
/// maps, filters, monitors) does not come through addObserver() when it lives in the same thread; an observable that
/// has to know of everybody who observes it derives from Observable.
///
/// Observables, handles and observers must be gone before main() returns: they use what the thread keeps for them, and
/// that ends before static objects do.
class ZEL_EXPORT ObservableImpl : public QObject, public Observable
{
    Q_OBJECT

public:
    ObservableImpl();
    ~ObservableImpl() override;

    /// Adding an observer twice makes it called twice.
    bool addObserver(const ObserverImpl* observer) const override;
    bool removeObserver(const ObserverImpl* observer) const override;

    /// Tells all observers, now, that this has changed.
    void notifyObservers();

    /// Does nothing, on purpose: a parent would delete what handles still hold.
    void setParent(QObject*) {}

Q_SIGNALS:
    /// Comes after the change.
    void observableChanged();

protected:
    /// Keeps an observable alive if it is counted, and otherwise knows whether it is still there.
    class ZEL_EXPORT Hold
    {
    public:
        Hold() = default;
        explicit Hold(const ObservableImpl& observable);
        bool isAlive() const { return m_counted || m_uncounted; }

    private:
        ObservablePointer m_counted;
        QPointer<const QObject> m_uncounted;
    };

    /// To be called at the end of every announcing operation, when the state shows the change: has it taken in and
    /// announced. `beforeTelling` is called right before the signals.
    void note(const Change& change, void (*beforeTelling)(ObservableImpl&) = nullptr);
    /// Emits observableChanged().
    void doEmit();
    /// Takes note that there is somebody to tell. An override calls this.
    void connectNotify(const QMetaMethod& signal) override;

private:
    Q_DISABLE_COPY_MOVE(ObservableImpl)
    friend class Follower;
    friend class Round;

    void appendKeys(const ChangedKeys& changed, std::vector<MapChange>& keys) const;
    void tell(const Change& change, const std::vector<MapChange>& keys, const Hold& hold);
    void tellInParticular(const Change& change, const std::vector<MapChange>& keys, const Hold& hold);

    /// Whether anything was ever connected to it, from whatever thread: most values and derived containers are followed
    /// and never heard, and what they would tell is left out.
    std::atomic<bool> m_isHeard = false;
    int m_untold = 0; ///< its number among what rounds have yet to announce, counted from 1
    mutable Follower* m_firstFollower = nullptr;
    mutable Follower* m_lastFollower = nullptr;
};

} // namespace iface
