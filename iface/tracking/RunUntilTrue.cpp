// SPDX-License-Identifier: Apache-2.0
#include <iface/RunUntilTrue.h>

#include "tracking/MonitoredRun.h"

#include <memory>
#include <utility>

namespace iface {

RunUntilTrue::RunUntilTrue(boost::function<bool()> function, QObject* parent, const QString& name)
    : ObserverImpl(parent)
    , d(std::make_shared<MonitoredRun>(this, std::move(function), "RunUntilTrue.h", 88))
{
    setObjectName(name);
    d->schedule();
}

RunUntilTrue::~RunUntilTrue()
{
    d->close();
}

void RunUntilTrue::handleObservableChanged()
{
    d->handleChange();
}

} // namespace iface
