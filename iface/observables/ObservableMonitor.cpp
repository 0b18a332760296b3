// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableMonitor.h>

#include "MonitoredRun.h"

namespace iface {

class ObservableMonitor::Private : public MonitoredRun
{
public:
    using MonitoredRun::MonitoredRun;
};

ObservableMonitor::ObservableMonitor(boost::function<void()> function, QObject* parent, const QString& name,
                                     bool runAtOnce)
    : ObserverImpl(parent)
    , d(std::make_shared<Private>(
          this, name,
          [function = std::move(function)] {
              function();
              return false;
          },
          "ObservableMonitor.h", 116))
{
    if (runAtOnce)
        d->schedule();
}

ObservableMonitor::~ObservableMonitor()
{
    d->close();
}

QString ObservableMonitor::name() const
{
    return d->name();
}

void ObservableMonitor::handleObservableChanged()
{
    const std::shared_ptr<Private> alive = d;
    alive->handleChange();
}

} // namespace iface
