// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableTracker.h>

#include <iface/Logging.h>

namespace iface {

namespace {

thread_local constinit ReadRecorder* t_current = nullptr;

// The lines are known under this name and these numbers to whoever reads logs; they do not follow the source.
void reportNullSet(int line)
{
    ZEL_IFACE_LOG("ObservableTracker.h", line, LogLevel::Error, LogCategory::General,
                  QStringLiteral("ObservableSet is null!"));
}

} // namespace

void ObservableTracker::getterCalled(const Observable* observable)
{
    if (t_current && observable->ref.loadRelaxed() > 0)
        t_current->recordRead(observable);
}

ReadRecorder* ObservableTracker::currentGetterCalledSet()
{
    return t_current;
}

ReadRecorder* ObservableTracker::setCurrentGetterCalledSet(ReadRecorder* recorder)
{
    return std::exchange(t_current, recorder);
}

ObservableTracker::Suspension::Suspension()
    : m_suspended(std::exchange(t_current, nullptr))
{
}

ObservableTracker::Suspension::~Suspension()
{
    t_current = m_suspended;
}

ObservableTracker::Scope::Scope(ReadRecorder* recorder)
    : m_outer(std::exchange(t_current, recorder))
{
    if (!t_current)
        reportNullSet(82);
}

bool ObservableTracker::Scope::finish() const
{
    if (t_current)
        return true;
    // Somebody has taken the recorder away and not put it back. Once for the result that is missing, once for the
    // set that is to be given back; that nothing was tracked around an outermost run is no fault and no line.
    reportNullSet(88);
    reportNullSet(94);
    return false;
}

ObservableTracker::Scope::~Scope()
{
    t_current = m_outer;
}

} // namespace iface
