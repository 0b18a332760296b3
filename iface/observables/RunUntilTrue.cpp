// SPDX-License-Identifier: Apache-2.0
#include <iface/RunUntilTrue.h>

#include "MonitoredRun.h"

namespace iface {

class RunUntilTrue::Private : public MonitoredRun
{
public:
    using MonitoredRun::MonitoredRun;
};

RunUntilTrue::RunUntilTrue(boost::function<bool()> function, QObject* parent, const QString& name)
    : ObserverImpl(parent)
    , d(std::make_shared<Private>(this, name, std::move(function), "RunUntilTrue.h", 88))
{
    d->schedule();
}

RunUntilTrue::~RunUntilTrue()
{
    d->close();
}

QString RunUntilTrue::name() const
{
    return d->name();
}

void RunUntilTrue::handleObservableChanged()
{
    const std::shared_ptr<Private> alive = d;
    alive->handleChange();
}

} // namespace iface
