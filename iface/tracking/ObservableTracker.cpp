// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableTracker.h>

#include <iface/Logging.h>

using namespace Qt::StringLiterals;

namespace iface {

namespace {

/// What takes note of this thread's reads. Announcements suspend it for every single change.
[[gnu::tls_model("initial-exec")]] constinit thread_local ReadRecorder* t_currentRecorder = nullptr;

} // namespace

ReadRecorder::~ReadRecorder() = default;

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

ObservableTracker::Suspension::Suspension(ReadRecorder* recorder)
    : m_suspended(setCurrentGetterCalledSet(recorder))
{
}

ObservableTracker::Suspension::~Suspension()
{
    t_currentRecorder = m_suspended;
}

// The lines are known under this name and their numbers to whoever reads logs; they do not follow the source.
void ObservableTracker::reportNullSet(int line)
{
    ZEL_IFACE_LOG("ObservableTracker.h", line, LogLevel::Error, LogCategory::General, u"ObservableSet is null!"_s);
}

} // namespace iface
