// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Observable.h>
#include <iface/ReadRecorder.h>
#include <iface/detail/IndexedSequence.h>

#include <QtCore/QHash>

#include <boost/function.hpp>
#include <boost/intrusive/list.hpp>

#include <memory>

namespace iface {

/// What computations read, each observed from the moment it is read: for every observable the computations that depend
/// on it, for every computation the observables. A monitor is one computation; a filtered list has one for each item.
///
/// One follower per observable serves all, and one link of six words stands for one computation's dependence on one
/// observable. A computation without dependencies has no node, and the link of one that has a single dependency is in
/// its node. A change makes the computations affected dirty, and says so once however many they are. What is read
/// again stays as it is, so only differences between two runs cost anything.
///
/// Observables of another kind or thread are observed through addObserver(), and so reach this through the event loop
/// of the thread that reads them.
class Dependencies
{
    class Source;
    /// Leaves its row when it ends.
    using Hook = boost::intrusive::list_member_hook<boost::intrusive::link_mode<boost::intrusive::auto_unlink>>;

public:
    class Node;

private:
    struct Link
    {
        Source* source = nullptr;
        Node* node = nullptr;
        Link* previousOfSource = nullptr;
        Link* nextOfSource = nullptr;
        Link* nextOfNode = nullptr;
        unsigned lastRun = 0;
    };

public:
    class Node : public detail::IndexedSequence::Item
    {
        friend class Dependencies;
        Hook m_dirtyHook;
        Link* m_first = nullptr;
        Link* m_last = nullptr;
        Link m_ownLink; ///< in use while it has a source
    };

    /// One run of one computation; there is one at a time. Takes its reads from the moment they are made, so that no
    /// change gets lost between the read and the end.
    class Run : public ReadRecorder
    {
    public:
        /// `node` is what an earlier run returned, or null.
        Run(Dependencies& dependencies, Node* node);
        void recordRead(const Observable* observable) override;
        /// Lets go of what was not read again, unless reading did not come to its end. Returns the computation's node;
        /// null when it depends on nothing, and then a node that it had is to be released.
        Node* finish(bool isWhole = true);

    private:
        Q_DISABLE_COPY_MOVE(Run)
        Link* findEarlier(const Source* source) const;

        Dependencies& m_dependencies;
        Node* m_node;
        Link* m_expected;
        const Observable* m_last = nullptr; ///< what was read last: much is read twice in a row
        bool m_isFirst;
    };

    /// `madeDirty` is called in the first step of a round, and only takes note of it. `self` is what the computations
    /// make, if it can be read: depending on itself, it would keep itself alive.
    explicit Dependencies(boost::function<void()> madeDirty, const Observable* self = nullptr);
    ~Dependencies();

    /// Forgets a computation, which must have left its sequence.
    void release(Node* node);

    /// For when everything is computed anew.
    void forgetDirty();
    /// Takes all that are dirty now, in the place of any that were taken before.
    void takeDirty();
    /// One of those taken, which is dirty no more, or null when there is none left.
    const Node* nextTaken();
    /// Brings the lists that were read up to date, in the first step of a round.
    void settle();

private:
    Q_DISABLE_COPY_MOVE(Dependencies)
    Link* add(Node* node, Source* source);
    void unlink(Link* link);
    void dropUnused(Source* source);
    Source* source(const Observable* observable);
    void changed(const Source& source);

    using DirtyNodes = boost::intrusive::list<Node, boost::intrusive::constant_time_size<false>,
                                              boost::intrusive::member_hook<Node, Hook, &Node::m_dirtyHook>>;
    struct ListSources;

    const boost::function<void()> m_madeDirty;
    const Observable* const m_self;
    QHash<const Observable*, Source*> m_sources;
    const std::unique_ptr<ListSources> m_lists; ///< among the sources: what may have something to take in
    DirtyNodes m_dirty;
    DirtyNodes m_taken;
    unsigned m_run = 0;
    const Node* m_running = nullptr;
};

} // namespace iface
