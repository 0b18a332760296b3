// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/detail/DerivedList.h>
#include <iface/detail/IndexedSequence.h>

#include <memory>
#include <vector>

namespace iface {
class Dependencies;
} // namespace iface

namespace iface::detail {

/// Everything of a filtered list that does not depend on the type of its items; see FilteredObservableList.
///
/// One place per input item, marked if the item passes, with what the item's verdict depends on, if anything.
class ZEL_EXPORT FilteredListBase : public DerivedList
{
public:
    ~FilteredListBase() override;

    bool announcesEveryReadItem() const override;

protected:
    /// reset() is to be called once, when the subclass can judge.
    explicit FilteredListBase(ObservableListImpl* input);

private:
    using Item = IndexedSequence::Item;

    virtual bool passes(const QVariant& item) const = 0;

    int count() const override;
    QVariant item(int index) const override;
    void take(const Change& change) override;
    void settleOthers() override;

    Change takeInput(const Change& change);
    Change added(int index);
    Change updated(int index);
    Change removed(int index);
    Change rebuilt(const Change& change);
    Change remapped(const IndexMapper& mapper);
    Change judgedAnew();

    bool judge(int index);
    void setNode(int index, Item* node);
    void releaseNodes(IndexedSequence& places);
    QSharedPointer<IndexMapper> turn();

    IndexedSequence m_places;
    std::unique_ptr<Dependencies> const m_dependencies;
    std::vector<int> m_turned;
};

} // namespace iface::detail
