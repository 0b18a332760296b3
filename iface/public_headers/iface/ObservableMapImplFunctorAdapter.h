// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableMapImplBase.h>

#include <QtCore/QObject>

#include <boost/function.hpp>

namespace iface {

/// Calls a function with the changes of maps.
///
/// Its parent or its maker owns it, and it keeps no map alive. The function may do whatever an observer may (see
/// ObservableImpl) and may destroy the adapter; an empty one throws `boost::bad_function_call` when a change comes.
class ZEL_EXPORT ObservableMapImplFunctorAdapter : public QObject
{
    Q_OBJECT

public:
    explicit ObservableMapImplFunctorAdapter(boost::function<void(MapChange)> function, QObject* parent = nullptr);
    ~ObservableMapImplFunctorAdapter() override;

    void startListening(const ObservableMapImplBase* map);
    void stopListening(const ObservableMapImplBase* map);

public Q_SLOTS:
    void mapChanged(MapChange change);

private:
    boost::function<void(MapChange)> m_function;
};

} // namespace iface
