// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableMapImplBase.h>
#include <iface/detail/DerivedList.h>
#include <iface/detail/IndexedSequence.h>

#include <QtCore/QVarLengthArray>

#include <boost/intrusive/list.hpp>

#include <algorithm>

namespace iface::detail {

/// Everything of a transformed list that does not depend on its types; see LazyTransformedObservableListImpl.
///
/// One place per key, marked and with an entry if the item is kept.
class ZEL_EXPORT LazyTransformedListBase : public DerivedList
{
public:
    bool announcesEveryReadItem() const override;

protected:
    /// An item that is kept. The subclass adds key and value.
    class Entry : public IndexedSequence::Item
    {
        friend class LazyTransformedListBase;
        using DirtyHook =
            boost::intrusive::list_member_hook<boost::intrusive::link_mode<boost::intrusive::auto_unlink>>;
        /// Its value may be another.
        bool isDirty() const { return m_dirtyHook.is_linked(); }

        DirtyHook m_dirtyHook;
        bool m_isKeyDirty = false; ///< its key may be another, too
        bool m_isUnmade = false;   ///< it has no value: the map threw, or the input, and then it has no key either
        bool m_isUntold = false;   ///< made again since the map threw: who read it knows its value, and nobody was told
    };

    /// The subclass keeps the map alive; either may be null.
    LazyTransformedListBase(ObservableListImpl* input, ObservableMapImplBase* mapping, int cacheLimit);
    /// How many items may come to be kept as the list is now.
    int mostEntries() const { return std::min(m_cacheLimit, count()); }
    /// To be called in the subclass's destructor, while it can still destroy entries.
    void dropEntries();

private:
    /// An entry made of the input's item; without its value only the key.
    virtual Entry* createEntry(const QVariant& inputItem, bool withValue) = 0;
    /// Has the entry found by its key; once.
    virtual void enterKey(Entry& entry) = 0;
    /// Also takes it out of the keys.
    virtual void destroyEntry(Entry* entry) = 0;
    /// Takes the input's item for the key; tells whether it is another.
    virtual bool deriveKey(Entry& entry, const QVariant& inputItem) = 0;
    /// Derives the value anew from the key; tells whether it is another.
    virtual bool derive(Entry& entry) = 0;
    virtual QVariant valueOf(const Entry& entry) const = 0;
    /// Appends the entries under the keys that changed; false when none is known.
    virtual bool findEntries(const ChangedKeys& changed, QVarLengthArray<Entry*, 8>& found) = 0;

    using DirtyEntries =
        boost::intrusive::list<Entry, boost::intrusive::constant_time_size<false>,
                               boost::intrusive::member_hook<Entry, Entry::DirtyHook, &Entry::m_dirtyHook>>;

    class Mapping : public iface::Follower
    {
    public:
        explicit Mapping(LazyTransformedListBase* owner)
            : m_owner(owner)
        {
        }

    protected:
        void mark(const Change& change) override;

    private:
        LazyTransformedListBase* const m_owner;
    };

    int count() const override { return m_places.size(); }
    QVariant item(int index) const override;
    void take(const Change& change) override;

    Entry* entry(int index) const { return static_cast<Entry*>(m_places.item(index)); }
    bool isTooDeep() const;
    QVariant compute(int index);
    void registerRead() const;
    bool keep(int index, Entry* made);
    void deriveAnew(Entry& entry);
    bool deriveParts(Entry& entry, int index);
    void forgetAll();
    void destroy(Entry* entry);

    Change takeInput(const Change& change);
    void mappingChanged(const Change& change);
    void setDirty(Entry& entry, bool withKey);
    void setAllDirty(bool withKeys);
    void move(const IndexMapper& mapper, int countNow);
    bool announcesKeys() const { return !input() || input()->announcesEveryReadItem(); }

    const int m_cacheLimit;
    IndexedSequence m_places;
    DirtyEntries m_dirty;
    DirtyEntries m_asked; ///< of the dirty ones, those that are being derived anew
    Change m_made;        ///< that is to be announced of what is being taken in
    Mapping m_mapping{this};
    int m_depth = 0; ///< of items that are made or derived for the sake of another
};

} // namespace iface::detail
