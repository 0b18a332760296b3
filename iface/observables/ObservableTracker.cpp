// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableTracker.h>

#include "observables/CurrentRecorder.h"

#include <iface/Logging.h>

using namespace Qt::StringLiterals;

namespace iface {

[[gnu::tls_model("initial-exec")]] constinit thread_local ReadRecorder* t_currentRecorder = nullptr;

namespace {

// The lines are known under this name and these numbers to whoever reads logs; they do not follow the source.
void reportNullSet(int line)
{
    ZEL_IFACE_LOG("ObservableTracker.h", line, LogLevel::Error, LogCategory::General, u"ObservableSet is null!"_s);
}

} // namespace

void ObservableTracker::getterCalled(const Observable* observable)
{
    if (t_currentRecorder && observable->ref.loadRelaxed() > 0)
        t_currentRecorder->recordRead(observable);
}

ReadRecorder* ObservableTracker::currentGetterCalledSet()
{
    return t_currentRecorder;
}

ReadRecorder* ObservableTracker::setCurrentGetterCalledSet(ReadRecorder* recorder)
{
    return std::exchange(t_currentRecorder, recorder);
}

ObservableTracker::Suspension::Suspension()
    : m_suspended(std::exchange(t_currentRecorder, nullptr))
{
}

ObservableTracker::Suspension::~Suspension()
{
    t_currentRecorder = m_suspended;
}

ObservableTracker::Scope::Scope(ReadRecorder* recorder)
    : m_outer(std::exchange(t_currentRecorder, recorder))
{
    if (!t_currentRecorder)
        reportNullSet(82);
}

bool ObservableTracker::Scope::finish() const
{
    if (t_currentRecorder)
        return true;
    // Somebody has taken the recorder away and not put it back. Once for the result that is missing, once for the
    // set that is to be given back; that nothing was tracked around an outermost run is no fault and no line.
    reportNullSet(88);
    reportNullSet(94);
    return false;
}

ObservableTracker::Scope::~Scope()
{
    t_currentRecorder = m_outer;
}

} // namespace iface
