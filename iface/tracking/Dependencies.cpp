// SPDX-License-Identifier: Apache-2.0
#include "tracking/Dependencies.h"

#include <iface/Follower.h>
#include <iface/ObservableListImpl.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/Round.h>

#include <QtCore/QScopeGuard>
#include <QtCore/QThread>

#include <memory>
#include <utility>

namespace iface {

/// An observable and the computations that depend on it; goes with the last of them.
class Dependencies::Source : public Follower
{
public:
    Source(Dependencies& owner, const Observable* observed)
        : m_owner(owner)
        , target(observed)
    {
        const auto* ours = dynamic_cast<const ObservableImpl*>(observed);
        if (ours && ours->thread() == QThread::currentThread()) {
            m_list = dynamic_cast<const ObservableListImpl*>(observed);
            follow(*ours);
            return;
        }
        m_observer = std::make_unique<ObserverFunctorAdapter>(
            [this] { Round::together([this] { m_owner.changed(*this); }); }, nullptr);
        observed->addObserver(m_observer.get());
    }
    ~Source() override
    {
        if (m_observer)
            target->removeObserver(m_observer.get());
    }

    /// The target, if it is one of our lists.
    const ObservableListImpl* list() const { return m_list; }

protected:
    void mark(const Change&) override { m_owner.changed(*this); }

private:
    Dependencies& m_owner;
    const ObservableListImpl* m_list = nullptr;
    /// For an observable of another kind or thread than ours.
    std::unique_ptr<ObserverFunctorAdapter> m_observer;

public:
    const ObservablePointer target;
    Hook listHook;
    Link* first = nullptr;
    Link* last = nullptr;
    /// The last run that read it.
    unsigned lastRun = 0;
};

struct Dependencies::ListSources
{
    boost::intrusive::list<Source, boost::intrusive::constant_time_size<false>,
                           boost::intrusive::member_hook<Source, Hook, &Source::listHook>>
        row;
};

Dependencies::Run::Run(Dependencies& dependencies, Node* node)
    : m_dependencies(dependencies)
    , m_node(node)
    , m_expected(node ? node->m_first : nullptr)
    , m_isFirst(node == nullptr)
{
    ++dependencies.m_run;
    dependencies.m_running = node;
}

void Dependencies::Run::recordRead(const Observable* observable)
{
    if (observable == m_dependencies.m_self || observable == m_last)
        return;
    m_last = nullptr; // there may be no memory, and then this may be read again
    const unsigned run = m_dependencies.m_run;
    // Runs mostly read the same things in the same order.
    Link* link = m_expected && m_expected->source->target.data() == observable ? m_expected : nullptr;
    if (!link) {
        if (!m_node)
            m_dependencies.m_running = m_node = new Node;
        Source* const source = m_dependencies.source(observable);
        if (source->lastRun == run) {
            m_last = observable;
            return;
        }
        link = m_isFirst ? nullptr : findEarlier(source);
        if (!link)
            link = m_dependencies.add(m_node, source);
    }
    link->lastRun = run;
    link->source->lastRun = run;
    m_expected = link->nextOfNode;
    m_last = observable;
}

/// Looks through what the computation read and who read the source, whichever of them is over first: a monitor may have
/// read very much, and by very many items the same may have been read.
Dependencies::Link* Dependencies::Run::findEarlier(const Source* source) const
{
    Link* ofNode = m_node->m_first;
    Link* ofSource = source->first;
    for (; ofNode && ofSource; ofNode = ofNode->nextOfNode, ofSource = ofSource->nextOfSource) {
        if (ofNode->source == source)
            return ofNode;
        if (ofSource->node == m_node)
            return ofSource;
    }
    return nullptr;
}

Dependencies::Node* Dependencies::Run::finish(bool isWhole)
{
    if (!m_node)
        return nullptr;
    Link* dropped = nullptr;
    m_node->m_last = nullptr;
    for (Link** place = &m_node->m_first; *place;) {
        Link* const link = *place;
        if (!isWhole || link->lastRun == m_dependencies.m_run) {
            m_node->m_last = link;
            place = &link->nextOfNode;
        } else {
            *place = std::exchange(link->nextOfNode, dropped);
            dropped = link;
        }
    }
    // Letting go may destroy observables, and so run anything: everything is in order by then.
    while (dropped) {
        Link* const link = std::exchange(dropped, dropped->nextOfNode);
        Source* const source = link->source;
        m_dependencies.unlink(link);
        m_dependencies.dropUnused(source);
    }
    m_dependencies.m_running = nullptr;
    if (m_node->m_first)
        return m_node;
    if (m_isFirst)
        delete m_node; // there was memory for it, and for nothing that it depends on
    return nullptr;
}

Dependencies::Dependencies(boost::function<void()> madeDirty, const Observable* self)
    : m_madeDirty(std::move(madeDirty))
    , m_self(self)
    , m_lists(std::make_unique<ListSources>())
{
}

Dependencies::~Dependencies()
{
    Q_ASSERT(m_sources.isEmpty());
}

void Dependencies::release(Node* node)
{
    Q_ASSERT(!node->isPlaced());
    Run(*this, node).finish(); // which reads nothing any more
    delete node;
}

void Dependencies::forgetDirty()
{
    m_dirty.clear();
    m_taken.clear();
}

void Dependencies::takeDirty()
{
    m_taken.clear();
    m_taken.swap(m_dirty);
}

const Dependencies::Node* Dependencies::nextTaken()
{
    if (m_taken.empty())
        return nullptr;
    const Node& taken = m_taken.front();
    m_taken.pop_front();
    return &taken;
}

Dependencies::Link* Dependencies::add(Node* node, Source* source)
{
    auto drop = qScopeGuard([&] { dropUnused(source); });
    Link* const link = node->m_ownLink.source ? new Link : &node->m_ownLink;
    drop.dismiss();
    *link = Link{source, node, source->last, nullptr, nullptr, 0};
    (source->last ? source->last->nextOfSource : source->first) = link;
    source->last = link;
    (node->m_last ? node->m_last->nextOfNode : node->m_first) = link;
    node->m_last = link;
    return link;
}

/// Takes a link, which has left its node's list, from its source and frees it.
void Dependencies::unlink(Link* link)
{
    Source* const source = link->source;
    (link->previousOfSource ? link->previousOfSource->nextOfSource : source->first) = link->nextOfSource;
    (link->nextOfSource ? link->nextOfSource->previousOfSource : source->last) = link->previousOfSource;
    if (link == &link->node->m_ownLink)
        link->source = nullptr;
    else
        delete link;
}

void Dependencies::dropUnused(Source* source)
{
    if (source->first)
        return;
    m_sources.remove(source->target.data());
    delete source;
}

Dependencies::Source* Dependencies::source(const Observable* observable)
{
    if (Source* const known = m_sources.value(observable))
        return known;
    auto added = std::make_unique<Source>(*this, observable);
    if (added->list())
        m_lists->row.push_back(*added);
    m_sources.insert(observable, added.get());
    return added.release();
}

/// Reading brings a list up to date. What it lets go of meanwhile, and what is read for the first time, needs none.
void Dependencies::settle()
{
    ListSources waiting;
    waiting.row.swap(m_lists->row);
    const auto putBack = qScopeGuard([&] { m_lists->row.splice(m_lists->row.end(), waiting.row); });
    while (!waiting.row.empty()) {
        const QExplicitlySharedDataPointer<const ObservableListImpl> list(waiting.row.front().list());
        m_lists->row.splice(m_lists->row.end(), waiting.row, waiting.row.begin());
        list->childCount(QVariantList());
    }
}

void Dependencies::changed(const Source& source)
{
    bool isAnyDirty = false;
    for (const Link* link = source.first; link; link = link->nextOfSource) {
        // What a run that is under way has not read yet, it will read as it is by then, or not at all.
        if (link->node == m_running && link->lastRun != m_run)
            continue;
        isAnyDirty = true;
        if (!link->node->m_dirtyHook.is_linked())
            m_dirty.push_back(*link->node);
    }
    if (isAnyDirty)
        m_madeDirty();
}

} // namespace iface
