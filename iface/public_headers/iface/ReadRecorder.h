// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

namespace iface {

class Observable;

/// Takes note of what a tracked computation reads (see ObservableTracker).
class ZEL_EXPORT ReadRecorder
{
public:
    virtual ~ReadRecorder();

    /// `observable` is being read. Called for every read, repeated ones too, but never for what nobody counts.
    virtual void recordRead(const Observable* observable) = 0;
};

} // namespace iface
