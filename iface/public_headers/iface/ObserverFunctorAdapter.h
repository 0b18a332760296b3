// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObserverImpl.h>

#include <boost/function.hpp>

namespace iface {

/// An observer that calls a function: `observable.addObserver(new ObserverFunctorAdapter(fn, this))`.
///
/// An empty function is allowed until it is called: then `boost::bad_function_call` is thrown.
class ZEL_EXPORT ObserverFunctorAdapter : public ObserverImpl
{
    Q_OBJECT

public:
    explicit ObserverFunctorAdapter(boost::function<void()> function, QObject* parent = nullptr);
    ~ObserverFunctorAdapter() override;

public Q_SLOTS:
    void handleObservableChanged() override;

private:
    boost::function<void()> m_function;
};

} // namespace iface
