// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/Services.h>

#include <QtCore/QObject>

namespace vx::platform::zel {

/// The place of the message service beside its fellow delegates; no public class uses it yet. Made and owned by the
/// bridge.
class MessageServiceDelegate : public QObject
{
    Q_OBJECT

public:
    MessageServiceDelegate(Services*, QObject* parent)
        : QObject(parent)
    {
    }
};

} // namespace vx::platform::zel
