// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableMonitor.h>

#include "tracking/MonitoredRun.h"

#include <memory>
#include <utility>

namespace iface {

ObservableMonitor::ObservableMonitor(boost::function<void()> function, QObject* parent, const QString& name,
                                     bool runAtOnce)
    : ObserverImpl(parent)
    , d(std::make_shared<MonitoredRun>(
          this,
          [function = std::move(function)] {
              function();
              return false;
          },
          "ObservableMonitor.h", 116))
{
    setObjectName(name);
    if (runAtOnce)
        d->schedule();
}

ObservableMonitor::~ObservableMonitor()
{
    d->close();
}

void ObservableMonitor::handleObservableChanged()
{
    d->handleChange();
}

} // namespace iface
