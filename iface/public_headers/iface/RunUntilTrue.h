// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObserverImpl.h>

#include <QtCore/QString>

#include <boost/function.hpp>

#include <memory>

namespace iface {

class MonitoredRun;

/// Waits for a condition: runs a function in a later turn of the event loop, and again whenever something that it read
/// has changed, until it answers true once. From then on it stays idle, observes nothing and never runs again.
///
/// Ownership, thread, and what the function may do are those of ObservableMonitor.
class ZEL_EXPORT RunUntilTrue : public ObserverImpl
{
    Q_OBJECT

public:
    RunUntilTrue(boost::function<bool()> function, QObject* parent, const QString& name);
    ~RunUntilTrue() override;

    QString name() const { return objectName(); }

public Q_SLOTS:
    void handleObservableChanged() override;

private:
    std::shared_ptr<MonitoredRun> const d;
};

} // namespace iface
