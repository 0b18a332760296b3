// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ChangedKeys.h>
#include <iface/ObservableListImpl.h>
#include <iface/ObservableMapImplBase.h>
#include <iface/detail/IndexedSequence.h>

#include <QtCore/QVarLengthArray>

#include <memory>

namespace iface::detail {

/// Everything of a transformed list that does not depend on its types; see LazyTransformedObservableListImpl.
class ZEL_EXPORT LazyTransformedListBase : public ObservableListImpl
{
public:
    ~LazyTransformedListBase() override;

    int childCount(const QVariantList& indexPath) const override;
    QVariant data(const QVariantList& indexPath) const final;
    QVariant itemAt(int index) const final;
    bool announcesEveryReadItem() const override;

protected:
    /// An item that is kept. The subclass adds key and value.
    class Entry : public IndexedSequence::Item
    {
        friend class LazyTransformedListBase;
        bool m_isDirty = false;    ///< its value may be another
        bool m_isKeyDirty = false; ///< and so may its key
    };

    /// The subclass keeps both alive; either may be null.
    LazyTransformedListBase(ObservableListImpl* input, ObservableMapImplBase* mapping, int cacheLimit);
    /// How many items may come to be kept as the list is now.
    int mostEntries() const;
    /// To be called in the subclass's destructor, while it can still destroy entries.
    void dropEntries();

private:
    /// An entry made of the input's item.
    virtual Entry* createEntry(const QVariant& inputItem) const = 0;
    /// Has the entry found by its key; once.
    virtual void enterKey(Entry& entry) const = 0;
    /// Also takes it out of the keys.
    virtual void destroyEntry(Entry* entry) const = 0;
    /// Derives the value of an entry anew, from the input's item or, if there is none, from the key that is kept; tells
    /// whether key or value differ from what was kept.
    virtual bool derive(Entry& entry, const QVariant* inputItem) const = 0;
    virtual QVariant valueOf(const Entry& entry) const = 0;
    /// Appends the entries under the keys that changed; false when none is known.
    virtual bool findEntries(const ChangedKeys& changed, QVarLengthArray<Entry*, 8>& found) const = 0;

    struct Private;
    friend struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace iface::detail
