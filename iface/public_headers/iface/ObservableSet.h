// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Observable.h>
#include <iface/ReadRecorder.h>

#include <QtCore/QSet>

#include <vector>

namespace iface {

/// What a tracked computation read: observables without duplicates, in the order in which they were first read.
///
/// The set keeps what it holds alive. For one thread.
class ZEL_EXPORT ObservableSet : public ReadRecorder
{
public:
    using const_iterator = std::vector<ObservablePointer>::const_iterator;

    ObservableSet() = default;

    /// Takes a reference on what was read, unless the set holds it already.
    void recordRead(const Observable* observable) override;

    bool contains(const Observable* observable) const { return m_known.contains(observable); }
    bool isEmpty() const { return m_items.empty(); }
    int size() const { return static_cast<int>(m_items.size()); }
    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }
    void clear();

private:
    Q_DISABLE_COPY_MOVE(ObservableSet)

    std::vector<ObservablePointer> m_items;
    QSet<const Observable*> m_known; ///< the same, to be found
};

} // namespace iface
