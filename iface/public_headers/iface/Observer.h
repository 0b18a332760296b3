// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

namespace iface {

/// Somebody who wants to know when an observable changes.
class ZEL_EXPORT Observer
{
public:
    virtual ~Observer();

    /// Something that is observed has changed; its new state can be read already.
    virtual void handleObservableChanged() = 0;
};

} // namespace iface
