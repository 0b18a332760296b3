// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LightObserver.h>
#include <iface/Observable.h>
#include <iface/ReadRecorder.h>

#include <QHash>

#include <boost/function.hpp>

#include <memory>
#include <vector>

namespace iface {

class ObserverImpl;

/// What the latest run of a computation read, each observed from the moment it is read.
///
/// Between beginRun() and endRun() this records; what was read before and is read again stays observed as it is, so
/// only differences between two runs cost anything.
class Dependencies : public ReadRecorder
{
public:
    /// `changed` is called for every change of something that the latest run, finished or not, has read. Observables
    /// that cannot have a light observer (another kind, another thread) call `fallback` instead.
    Dependencies(ObserverImpl* fallback, boost::function<void()> changed);
    ~Dependencies() override;

    void beginRun();
    void recordRead(const Observable* observable) override;
    /// Lets go of what was not read since beginRun().
    void endRun();
    void clear();

private:
    Q_DISABLE_COPY_MOVE(Dependencies)
    class Link;

    Link* find(const Observable* observable);
    Link* add(const Observable* observable);

    ObserverImpl* const m_fallback;
    const boost::function<void()> m_changed;
    std::vector<std::unique_ptr<Link>> m_links;
    // Positions in m_links; only filled once there are too many to search through.
    QHash<const Observable*, std::size_t> m_index;
    // Where the next read is looked for first: runs mostly read the same things in the same order.
    std::size_t m_expected = 0;
    std::size_t m_read = 0;
    unsigned m_run = 0;
};

} // namespace iface
