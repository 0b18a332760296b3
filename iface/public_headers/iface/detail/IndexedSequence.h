// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace iface::detail {

/// A sequence of places that shift as places are put in and taken out. A place can be marked, and can hold an item
/// that knows where it stands.
///
/// The derived lists keep their bookkeeping in it: which items of the input pass a filter and the how-manieth each
/// of them is, and which place an item has now, after others came and went before it. Places lie in blocks of at
/// most 512, so every operation touches one block and sums over the others: n/512 additions at worst, next to
/// none when places near the last one are asked for, as a reader that walks the list does.
///
/// It does not own its items. An item leaves the sequence when its place is removed or another item is set there;
/// it must leave before it is destroyed. Not for use by several threads.
class ZEL_EXPORT IndexedSequence
{
    struct Block;

public:
    /// What a place can hold; to be derived from.
    class Item
    {
    public:
        Item() = default;
        Item(const Item&) = delete;
        Item& operator=(const Item&) = delete;
        bool isPlaced() const { return m_block != nullptr; }

    private:
        friend class IndexedSequence;
        Block* m_block = nullptr;
        mutable int m_offset = 0; ///< where it stood when last looked for
    };

    IndexedSequence();
    ~IndexedSequence();
    IndexedSequence(const IndexedSequence&) = delete;
    IndexedSequence& operator=(const IndexedSequence&) = delete;
    void swap(IndexedSequence& other) noexcept;

    int size() const { return m_size; }
    int markedCount() const { return m_marked; }

    /// Drops every place and makes `count` new ones, unmarked and without items.
    void reset(int count);
    /// As all that may need memory it changes nothing when there is none.
    void insert(int index, Item* item = nullptr);
    /// Returns the item that stood there, if any.
    Item* remove(int index);
    /// Has the place at `from` stand at `to` in the end.
    void move(int from, int to);

    bool isMarked(int index) const;
    void setMarked(int index, bool marked);
    /// How many places before `index` are marked.
    int rank(int index) const;
    /// The place of the marked one that has `rank` marked ones before it.
    int select(int rank) const;

    Item* item(int index) const;
    /// Returns the item that stood there before, if any.
    Item* setItem(int index, Item* item);
    /// Where a placed item stands now.
    int indexOf(const Item& item) const;

private:
    /// The counts stand beside the blocks, so that summing does not visit them.
    struct Part
    {
        std::unique_ptr<Block> block;
        int size = 0;
        int marked = 0;
    };
    /// A block, and how many places and marked places lie before it.
    struct Cursor
    {
        int block = 0;
        int start = 0;
        int startRank = 0;
    };

    void letGoOfItems();
    Block& seek(int index) const;
    void seekBlock(int block) const;
    /// The part under the cursor.
    const Part& current() const { return m_parts[m_cursor.block]; }
    Part& current() { return m_parts[m_cursor.block]; }
    void stepForward() const;
    void stepBackward() const;
    void makeRoom(int& offset);
    void split(int block, int offset);
    bool mergeWithNext(int block);
    void removeBlock(int block);
    void renumber(int from);

    std::vector<Part> m_parts; ///< never empty
    mutable Cursor m_cursor;
    int m_size = 0;
    int m_marked = 0;
};

} // namespace iface::detail
