// SPDX-License-Identifier: Apache-2.0
#include "observables/Dependencies.h"

#include <iface/Follower.h>
#include <iface/ObservableListImpl.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/Round.h>

#include <QtCore/QThread>

#include <algorithm>
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
        , list(nullptr)
    {
        const auto* ours = dynamic_cast<const ObservableImpl*>(observed);
        if (ours && ours->thread() == QThread::currentThread()) {
            list = dynamic_cast<const ObservableListImpl*>(observed);
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

protected:
    void mark(const Change&) override { m_owner.changed(*this); }

private:
    Dependencies& m_owner;
    /// For an observable of another kind or thread than ours.
    std::unique_ptr<ObserverFunctorAdapter> m_observer;

public:
    const ObservablePointer target;
    const ObservableListImpl* list; ///< the target, if it is one of ours
    Link* first = nullptr;
    Link* last = nullptr;
    /// The last run that read it.
    unsigned lastRun = 0;
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
    if (observable == m_dependencies.m_self || observable == std::exchange(m_last, observable))
        return;
    const unsigned run = m_dependencies.m_run;
    // Runs mostly read the same things in the same order.
    Link* link = m_expected && m_expected->source->target.data() == observable ? m_expected : nullptr;
    if (!link) {
        Source* const source = m_dependencies.source(observable);
        if (source->lastRun == run)
            return;
        if (!m_node)
            m_dependencies.m_running = m_node = new Node;
        link = m_isFirst ? nullptr : findEarlier(source);
        if (!link)
            link = m_dependencies.add(m_node, source);
    }
    link->lastRun = run;
    link->source->lastRun = run;
    m_expected = link->nextOfNode;
}

Dependencies::Link* Dependencies::Run::findEarlier(const Source* source) const
{
    Link* link = m_node->m_first;
    while (link && link->source != source)
        link = link->nextOfNode;
    return link;
}

Dependencies::Node* Dependencies::Run::finish()
{
    if (!m_node)
        return nullptr;
    Link* dropped = nullptr;
    m_node->m_last = nullptr;
    for (Link** place = &m_node->m_first; *place;) {
        Link* const link = *place;
        if (link->lastRun == m_dependencies.m_run) {
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
    return m_node->m_first ? m_node : nullptr;
}

Dependencies::Dependencies(boost::function<void()> madeDirty, const Observable* self)
    : m_madeDirty(std::move(madeDirty))
    , m_self(self)
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
    if (node->m_isDirty)
        m_dirty.erase(std::find(m_dirty.begin(), m_dirty.end(), node));
    delete node;
}

const std::vector<Dependencies::Node*>& Dependencies::takeDirty()
{
    m_taken.clear();
    m_taken.swap(m_dirty);
    for (Node* const node : m_taken)
        node->m_isDirty = false;
    return m_taken;
}

Dependencies::Link* Dependencies::add(Node* node, Source* source)
{
    Link* const link = node->m_ownLink.source ? new Link : &node->m_ownLink;
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
    if (source->list)
        m_lists.erase(std::find(m_lists.begin(), m_lists.end(), source->list));
    delete source;
}

Dependencies::Source* Dependencies::source(const Observable* observable)
{
    if (Source* const known = m_sources.value(observable))
        return known;
    auto* const added = new Source(*this, observable);
    m_sources.insert(observable, added);
    if (added->list)
        m_lists.push_back(added->list);
    return added;
}

void Dependencies::settle() const
{
    // Reading brings a list up to date, and may come upon more of them.
    for (std::size_t i = 0; i < m_lists.size(); ++i) {
        const QExplicitlySharedDataPointer<const ObservableListImpl> list(m_lists[i]);
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
        if (!std::exchange(link->node->m_isDirty, true))
            m_dirty.push_back(link->node);
    }
    if (isAnyDirty)
        m_madeDirty();
}

} // namespace iface
