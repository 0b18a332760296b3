// SPDX-License-Identifier: Apache-2.0
#include <iface/Observer.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/ObserverImpl.h>

#include <utility>

namespace iface {

Observer::~Observer() = default;

ObserverImpl::ObserverImpl(QObject* parent)
    : QObject(parent)
{
}

ObserverFunctorAdapter::ObserverFunctorAdapter(boost::function<void()> function, QObject* parent)
    : ObserverImpl(parent)
    , m_function(std::move(function))
{
}

ObserverFunctorAdapter::~ObserverFunctorAdapter()
{
    // What ends with the function may change what is observed.
    const boost::function<void()> ending = std::exchange(m_function, [] {});
}

void ObserverFunctorAdapter::handleObservableChanged()
{
    // A copy: the function may destroy this.
    const boost::function<void()> function = m_function;
    function();
}

} // namespace iface
