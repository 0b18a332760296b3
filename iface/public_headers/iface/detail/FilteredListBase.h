// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/detail/FilterFlips.h>
#include <iface/ObservableListImpl.h>

#include <QtCore/QSharedPointer>

#include <memory>

namespace iface::detail {

/// Everything of a filtered list that does not depend on the type of its items; see FilteredObservableList.
class ZEL_EXPORT FilteredListBase : public ObservableListImpl
{
public:
    ~FilteredListBase() override;

    int childCount(const QVariantList& indexPath) const override;
    QVariant data(const QVariantList& indexPath) const final;
    QVariant itemAt(int index) const final;
    bool announcesEveryReadItem() const override;

protected:
    /// The subclass keeps the input alive. May be null: an empty input.
    explicit FilteredListBase(ObservableListImpl* input);
    /// To be called once, when the subclass can judge.
    void build();

private:
    virtual bool passes(const QVariant& item) const = 0;
    virtual QSharedPointer<IndexMapper> makeMapper(FilterFlips flips) const = 0;

    struct Private;
    friend struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace iface::detail
