// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LightObserver.h>
#include <iface/Observable.h>
#include <iface/ReadRecorder.h>

#include <QObject>

namespace iface {

/// The base of all observables that announce their changes with a signal.
///
/// It has no parent and must not get one: only the reference count rules its life. Changes are announced at once,
/// inside notifyObservers(): first every LightObserver in the order in which they attached, then the receivers of
/// observableChanged() in the order in which they connected. Observers of another thread hear through their event
/// loop. The observable is kept alive for the whole announcement, and what observers read meanwhile is no
/// dependency of a computation that is being tracked on this thread.
///
/// Change first, then notify: an observer may read anything. It may also add and remove observers (new ones hear
/// the next change), change the observable again (that change is announced there and then, in full), drop the last
/// handle, destroy an observable that is not counted, spin an event loop, or throw. What is thrown reaches the caller
/// of notifyObservers(); whether later observers were called is then not promised.
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
    /// Held while something is announced: keeps the observable alive (if it is counted) and suspends tracking.
    class ZEL_EXPORT Announcement
    {
    public:
        explicit Announcement(const ObservableImpl& observable);
        ~Announcement();
        /// Whether the observable is still there. It may be gone only if nobody counted it.
        bool isAlive() const { return m_observable != nullptr; }

    private:
        Q_DISABLE_COPY_MOVE(Announcement)
        friend class ObservableImpl;
        friend class LightObserver;

        ReadRecorder* const m_suspended;
        ObservablePointer m_hold;
        const ObservableImpl* m_observable;
        // The round of light observers under way: the next one to call, and the last one of this round.
        LightObserver* m_next = nullptr;
        LightObserver* m_last = nullptr;
        Announcement* const m_outer;
    };

    /// Tells the light observers what a list or a map has to say in particular.
    void tellLightObservers(Announcement& announcement, const ListChange& change);
    void tellLightObservers(Announcement& announcement, const ChangedKeys& keys);
    /// The bare announcement, to be made while an Announcement is held.
    void doEmit(Announcement& announcement);
    /// The same, with an Announcement of its own.
    void doEmit();

private:
    Q_DISABLE_COPY_MOVE(ObservableImpl)
    friend class LightObserver;

    template <class Call>
    void callLightObservers(Announcement& announcement, const Call& call);

    mutable LightObserver* m_firstLight = nullptr;
    mutable LightObserver* m_lastLight = nullptr;
};

} // namespace iface
