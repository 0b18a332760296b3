// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Observable.h>
#include <iface/ReadRecorder.h>
#include <iface/detail/IndexedSequence.h>

#include <QHash>

#include <boost/function.hpp>

#include <vector>

namespace iface {

/// What the judgement of each item of a list read: for every observable the items that depend on it, for every item
/// the observables.
///
/// One light observer per observable serves all items, and one link of six words stands for one item's dependence on
/// one observable. An item without dependencies has no node, and the link of one that has a single dependency is in
/// its node. A change makes the items affected dirty, and says so once however many they are.
class ItemDependencies
{
    class Source;

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
        friend class ItemDependencies;
        bool m_isDirty = false;
        Link* m_first = nullptr;
        Link* m_last = nullptr;
        Link m_ownLink; ///< in use while it has a source
    };

    /// One judgement of one item: takes its reads from the moment they are made, so that no change gets lost between
    /// the read and the end.
    class Run : public ReadRecorder
    {
    public:
        /// `node` is what an earlier run returned for the item, or null.
        Run(ItemDependencies& dependencies, Node* node);
        void recordRead(const Observable* observable) override;
        /// Lets go of what was not read again. Returns the item's node; null when it depends on nothing, and then a
        /// node that it had is to be released.
        Node* finish();

    private:
        Q_DISABLE_COPY_MOVE(Run)
        Link* findEarlier(const Source* source) const;

        ItemDependencies& m_dependencies;
        Node* m_node;
        Link* m_expected;
        bool m_isFirst;
    };

    /// `madeDirty` may judge the items anew at once, or leave that for later.
    explicit ItemDependencies(boost::function<void()> madeDirty);
    ~ItemDependencies();

    /// Forgets an item, which must have left its sequence.
    void release(Node* node);

    bool hasDirty() const { return !m_dirty.empty(); }
    /// The dirty items, which are so no more. Good until the next call.
    const std::vector<Node*>& takeDirty();

private:
    Q_DISABLE_COPY_MOVE(ItemDependencies)
    Link* add(Node* node, Source* source);
    void unlink(Link* link);
    void dropUnused(Source* source);
    Source* source(const Observable* observable);
    void changed(const Source& source);

    const boost::function<void()> m_madeDirty;
    QHash<const Observable*, Source*> m_sources;
    std::vector<Node*> m_dirty;
    std::vector<Node*> m_taken;
    unsigned m_run = 0;
};

} // namespace iface
