// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableSet.h>

#include <algorithm>

namespace iface {

namespace {

// Up to here looking at every item is quicker than hashing.
constexpr std::size_t SearchedThrough = 16;

} // namespace

ReadRecorder::~ReadRecorder() = default;

ObservableSet::ObservableSet() = default;
ObservableSet::~ObservableSet() = default;

void ObservableSet::recordRead(const Observable* observable)
{
    if (contains(observable))
        return;
    m_items.emplace_back(observable);
    if (m_items.size() <= SearchedThrough)
        return;
    if (m_index.isEmpty()) {
        for (const ObservablePointer& item : m_items)
            m_index.insert(item.data());
    }
    m_index.insert(observable);
}

bool ObservableSet::contains(const Observable* observable) const
{
    if (!m_index.isEmpty())
        return m_index.contains(observable);
    return std::any_of(m_items.begin(), m_items.end(),
                       [observable](const ObservablePointer& item) { return item.data() == observable; });
}

void ObservableSet::clear()
{
    m_index.clear();
    m_items.clear();
}

} // namespace iface
