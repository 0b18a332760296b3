// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableSet.h>

namespace iface {

void ObservableSet::recordRead(const Observable* observable)
{
    if (contains(observable))
        return;
    m_items.emplace_back(observable);
    m_known.insert(observable);
}

void ObservableSet::clear()
{
    m_known.clear();
    std::vector<ObservablePointer> items;
    items.swap(m_items); // they go last: that may run anything, reads included
}

} // namespace iface
