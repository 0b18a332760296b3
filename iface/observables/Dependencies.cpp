// SPDX-License-Identifier: Apache-2.0
#include "Dependencies.h"

#include <iface/ObservableImpl.h>
#include <iface/ObserverImpl.h>

#include <QThread>

#include <algorithm>
#include <utility>

namespace iface {

namespace {

// Up to here looking at every link is quicker than hashing.
constexpr std::size_t SearchedThrough = 16;

} // namespace

class Dependencies::Link : public LightObserver
{
public:
    Link(Dependencies& owner, const Observable* target)
        : m_owner(owner)
        , m_target(target)
    {
        // The owner's thread is where it runs, and so the current one.
        const auto* local = dynamic_cast<const ObservableImpl*>(target);
        if (local && local->thread() == QThread::currentThread())
            observe(*local);
        else
            m_viaFallback = target->addObserver(m_owner.m_fallback);
    }

    ~Link() override
    {
        if (m_viaFallback)
            m_target->removeObserver(m_owner.m_fallback);
    }

    const Observable* target() const { return m_target.data(); }

    unsigned lastRun = 0;

protected:
    void observableChanged() override
    {
        // What this run has not read yet, it will read as it is by then, or not at all.
        if (lastRun == m_owner.m_run)
            m_owner.m_changed();
    }

private:
    Dependencies& m_owner;
    const ObservablePointer m_target;
    bool m_viaFallback = false;
};

Dependencies::Dependencies(ObserverImpl* fallback, boost::function<void()> changed)
    : m_fallback(fallback)
    , m_changed(std::move(changed))
{
}

Dependencies::~Dependencies() = default;

void Dependencies::beginRun()
{
    ++m_run;
    m_expected = 0;
    m_read = 0;
}

void Dependencies::recordRead(const Observable* observable)
{
    Link* link = find(observable);
    if (!link)
        link = add(observable);
    if (std::exchange(link->lastRun, m_run) != m_run)
        ++m_read;
}

Dependencies::Link* Dependencies::find(const Observable* observable)
{
    std::size_t at = m_expected;
    if (at >= m_links.size() || m_links[at]->target() != observable) {
        if (m_links.size() > SearchedThrough) {
            at = m_index.value(observable, m_links.size());
        } else {
            const auto found = std::find_if(m_links.begin(), m_links.end(),
                                            [observable](const auto& link) { return link->target() == observable; });
            at = static_cast<std::size_t>(found - m_links.begin());
        }
        if (at == m_links.size())
            return nullptr;
    }
    m_expected = at + 1;
    return m_links[at].get();
}

Dependencies::Link* Dependencies::add(const Observable* observable)
{
    m_links.push_back(std::make_unique<Link>(*this, observable));
    m_expected = m_links.size();
    if (m_links.size() > SearchedThrough) {
        for (std::size_t i = m_index.isEmpty() ? 0 : m_links.size() - 1; i < m_links.size(); ++i)
            m_index.insert(m_links[i]->target(), i);
    }
    return m_links.back().get();
}

void Dependencies::endRun()
{
    if (m_read == m_links.size())
        return;
    // Letting go may destroy observables and so run anything: first everything is in order.
    std::vector<std::unique_ptr<Link>> dropped;
    std::vector<std::unique_ptr<Link>> kept;
    kept.reserve(m_read);
    for (auto& link : m_links)
        (link->lastRun == m_run ? kept : dropped).push_back(std::move(link));
    m_links = std::move(kept);
    m_index.clear();
    if (m_links.size() > SearchedThrough) {
        for (std::size_t i = 0; i < m_links.size(); ++i)
            m_index.insert(m_links[i]->target(), i);
    }
}

void Dependencies::clear()
{
    beginRun();
    endRun();
}

} // namespace iface
