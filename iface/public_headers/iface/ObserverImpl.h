// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Observer.h>

#include <QtCore/QObject>

namespace iface {

/// An observer that signals reach.
///
/// Its parent owns it as usual in Qt; destroying it ends its registrations, and it is never called again. It is
/// called on the thread it lives in: at once when that is the observable's thread, through the event loop otherwise.
/// It may be moved to another; an ObservableMonitor or a RunUntilTrue, which follow what they read, may not. While
/// being called it may add or remove observers, itself included, and may be destroyed.
class ZEL_EXPORT ObserverImpl : public QObject, public Observer
{
    Q_OBJECT

public:
    explicit ObserverImpl(QObject* parent = nullptr);

public Q_SLOTS:
    void handleObservableChanged() override = 0;
};

} // namespace iface
