// SPDX-License-Identifier: Apache-2.0
#include "ItemDependencies.h"

#include <iface/LightObserver.h>
#include <iface/ObservableImpl.h>
#include <iface/ObserverFunctorAdapter.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace iface {

/// An observable and the items that depend on it; goes with the last of them.
class ItemDependencies::Source : public LightObserver
{
public:
    Source(ItemDependencies& owner, const Observable* observed)
        : m_owner(owner)
        , target(observed)
    {
        if (const auto* light = dynamic_cast<const ObservableImpl*>(observed)) {
            observe(*light);
            return;
        }
        m_heavy = std::make_unique<ObserverFunctorAdapter>([this] { observableChanged(); }, nullptr);
        observed->addObserver(m_heavy.get());
    }
    ~Source() override
    {
        if (m_heavy)
            target->removeObserver(m_heavy.get());
    }

protected:
    void observableChanged() override { m_owner.changed(*this); }

private:
    ItemDependencies& m_owner;
    /// For an observable of another kind than ours.
    std::unique_ptr<ObserverFunctorAdapter> m_heavy;

public:
    const ObservablePointer target;
    Link* first = nullptr;
    Link* last = nullptr;
    /// The last run that read it.
    unsigned lastRun = 0;
};

ItemDependencies::Run::Run(ItemDependencies& dependencies, Node* node)
    : m_dependencies(dependencies)
    , m_node(node)
    , m_expected(node ? node->m_first : nullptr)
    , m_isFirst(node == nullptr)
{
    ++dependencies.m_run;
}

void ItemDependencies::Run::recordRead(const Observable* observable)
{
    const unsigned run = m_dependencies.m_run;
    // Runs mostly read the same things in the same order.
    Link* link = m_expected && m_expected->source->target.data() == observable ? m_expected : nullptr;
    if (!link) {
        Source* const source = m_dependencies.source(observable);
        if (source->lastRun == run)
            return;
        if (!m_node)
            m_node = new Node;
        link = m_isFirst ? nullptr : findEarlier(source);
        if (!link)
            link = m_dependencies.add(m_node, source);
    }
    link->lastRun = run;
    link->source->lastRun = run;
    m_expected = link->nextOfNode;
}

ItemDependencies::Link* ItemDependencies::Run::findEarlier(const Source* source) const
{
    Link* link = m_node->m_first;
    while (link && link->source != source)
        link = link->nextOfNode;
    return link;
}

ItemDependencies::Node* ItemDependencies::Run::finish()
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
    return m_node->m_first ? m_node : nullptr;
}

ItemDependencies::ItemDependencies(boost::function<void()> madeDirty)
    : m_madeDirty(std::move(madeDirty))
{
}

ItemDependencies::~ItemDependencies()
{
    Q_ASSERT(m_sources.isEmpty());
}

void ItemDependencies::release(Node* node)
{
    Q_ASSERT(!node->isPlaced());
    if (node->m_isDirty)
        m_dirty.erase(std::find(m_dirty.begin(), m_dirty.end(), node));
    std::vector<Source*> sources;
    for (Link* link = node->m_first; link;) {
        sources.push_back(link->source);
        unlink(std::exchange(link, link->nextOfNode));
    }
    delete node;
    // Letting go may destroy observables, and so run anything.
    for (Source* const source : sources)
        dropUnused(source);
}

const std::vector<ItemDependencies::Node*>& ItemDependencies::takeDirty()
{
    m_taken.clear();
    m_taken.swap(m_dirty);
    for (Node* const node : m_taken)
        node->m_isDirty = false;
    return m_taken;
}

ItemDependencies::Link* ItemDependencies::add(Node* node, Source* source)
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
void ItemDependencies::unlink(Link* link)
{
    Source* const source = link->source;
    (link->previousOfSource ? link->previousOfSource->nextOfSource : source->first) = link->nextOfSource;
    (link->nextOfSource ? link->nextOfSource->previousOfSource : source->last) = link->previousOfSource;
    if (link == &link->node->m_ownLink)
        link->source = nullptr;
    else
        delete link;
}

void ItemDependencies::dropUnused(Source* source)
{
    if (source->first)
        return;
    m_sources.remove(source->target.data());
    delete source;
}

ItemDependencies::Source* ItemDependencies::source(const Observable* observable)
{
    Source*& source = m_sources[observable];
    if (!source)
        source = new Source(*this, observable);
    return source;
}

void ItemDependencies::changed(const Source& source)
{
    for (const Link* link = source.first; link; link = link->nextOfSource) {
        if (!std::exchange(link->node->m_isDirty, true))
            m_dirty.push_back(link->node);
    }
    if (!m_dirty.empty())
        m_madeDirty();
}

} // namespace iface
