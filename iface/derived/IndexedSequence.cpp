// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/IndexedSequence.h>

#include <QtCore/QScopeGuard>

#include <algorithm>
#include <array>
#include <bit>
#include <new>
#include <utility>

namespace iface::detail {

namespace {
constexpr int WordBits = 64;
constexpr int Words = 8;
constexpr int Capacity = Words * WordBits;
/// Below this a block looks for a neighbour to join, so that removals cannot leave a trail of tiny blocks.
constexpr int Sparse = Capacity / 8;

constexpr std::uint64_t bit(int offset)
{
    return std::uint64_t(1) << (offset % WordBits);
}
constexpr std::uint64_t bitsBelow(int offset)
{
    return bit(offset) - 1;
}
/// Mostly all are marked or none is, and counting bits is a call where the processor may not know how.
constexpr int countOf(std::uint64_t marks)
{
    return marks == 0 ? 0 : ~marks == 0 ? WordBits : std::popcount(marks);
}
} // namespace

struct IndexedSequence::Block
{
    explicit Block(int number)
        : ordinal(number)
    {
    }

    bool isMarked(int offset) const { return marks[offset / WordBits] & bit(offset); }
    void setMarked(int offset, bool marked)
    {
        auto& word = marks[offset / WordBits];
        word = marked ? word | bit(offset) : word & ~bit(offset);
    }

    int markedBefore(int offset) const
    {
        int count = 0;
        for (int word = 0; word < offset / WordBits; ++word)
            count += countOf(marks[word]);
        return offset % WordBits ? count + countOf(marks[offset / WordBits] & bitsBelow(offset)) : count;
    }

    int selectMarked(int rank) const
    {
        int word = 0;
        for (int count = countOf(marks[0]); count <= rank; count = countOf(marks[word])) {
            rank -= count;
            ++word;
        }
        auto bits = marks[word];
        if ((bits & (bits + 1)) == 0)
            return word * WordBits + rank; // all up to the last are marked
        for (; rank > 0; --rank)
            bits &= bits - 1;
        return word * WordBits + std::countr_zero(bits);
    }

    void insert(int offset, int size, Item* item)
    {
        if (item)
            makeItems();
        const int first = offset / WordBits;
        for (int word = size / WordBits; word > first; --word)
            marks[word] = marks[word] << 1 | marks[word - 1] >> (WordBits - 1);
        const auto low = marks[first] & bitsBelow(offset);
        marks[first] = (marks[first] & ~bitsBelow(offset)) << 1 | low;
        if (items) {
            std::move_backward(items.get() + offset, items.get() + size, items.get() + size + 1);
            items[offset] = nullptr;
        }
        if (item)
            place(offset, item);
    }

    Item* remove(int offset, int size)
    {
        const int first = offset / WordBits;
        const auto low = marks[first] & bitsBelow(offset);
        marks[first] = (marks[first] >> 1 & ~bitsBelow(offset)) | low;
        for (int word = first + 1; word <= (size - 1) / WordBits; ++word) {
            marks[word - 1] |= marks[word] << (WordBits - 1);
            marks[word] >>= 1;
        }
        Item* const item = take(offset);
        if (items) {
            std::move(items.get() + offset + 1, items.get() + size, items.get() + offset);
            items[size - 1] = nullptr;
        }
        return item;
    }

    Item* take(int offset)
    {
        Item* const item = items ? std::exchange(items[offset], nullptr) : nullptr;
        if (item)
            item->m_block = nullptr;
        return item;
    }

    /// Before anything is changed: there may be no memory.
    void makeItems()
    {
        if (!items)
            items = std::make_unique<Item*[]>(Capacity);
    }

    void place(int offset, Item* item)
    {
        items[offset] = item;
        item->m_block = this;
        item->m_offset = offset;
    }

    /// Takes over `count` places of another block, to stand from `offset` on. There is room for their items.
    void takeOver(Block& other, int from, int count, int offset)
    {
        for (int i = 0; i < count; ++i) {
            setMarked(offset + i, other.isMarked(from + i));
            other.setMarked(from + i, false);
            if (Item* const item = other.take(from + i))
                place(offset + i, item);
        }
    }

    std::array<std::uint64_t, Words> marks{}; ///< bits past the last place are clear
    std::unique_ptr<Item*[]> items;           ///< made when the first item comes
    int ordinal;
};

IndexedSequence::IndexedSequence()
{
    reset(0);
}

IndexedSequence::~IndexedSequence()
{
    letGoOfItems();
}

void IndexedSequence::swap(IndexedSequence& other) noexcept
{
    std::swap(m_parts, other.m_parts);
    std::swap(m_cursor, other.m_cursor);
    std::swap(m_size, other.m_size);
    std::swap(m_marked, other.m_marked);
}

void IndexedSequence::letGoOfItems()
{
    for (const Part& part : m_parts) {
        for (int offset = 0; part.block->items && offset < part.size; ++offset)
            part.block->take(offset);
    }
}

void IndexedSequence::reset(int count)
{
    std::vector<Part> parts;
    for (int left = count; parts.empty() || left > 0; left -= parts.back().size)
        parts.push_back({std::make_unique<Block>(int(parts.size())), std::min(left, Capacity)});
    letGoOfItems();
    m_parts.swap(parts);
    m_cursor = Cursor();
    m_size = count;
    m_marked = 0;
}

void IndexedSequence::insert(int index, Item* item)
{
    Q_ASSERT(index >= 0 && index <= m_size);
    seek(index);
    int offset = index - m_cursor.start;
    makeRoom(offset);
    current().block->insert(offset, current().size, item);
    ++current().size;
    ++m_size;
}

IndexedSequence::Item* IndexedSequence::remove(int index)
{
    Q_ASSERT(index >= 0 && index < m_size);
    setMarked(index, false);
    Part& part = current();
    Item* const item = part.block->remove(index - m_cursor.start, part.size);
    --part.size;
    --m_size;
    const int block = m_cursor.block;
    if (part.size == 0)
        removeBlock(block);
    else if (part.size < Sparse && !mergeWithNext(block) && block > 0)
        mergeWithNext(block - 1);
    return item;
}

void IndexedSequence::move(int from, int to)
{
    const bool marked = isMarked(from);
    Item* const item = setItem(from, nullptr);
    auto putBack = qScopeGuard([&] { setItem(from, item); });
    insert(to > from ? to + 1 : to, item);
    putBack.dismiss();
    remove(to > from ? from : from + 1);
    setMarked(to, marked);
}

bool IndexedSequence::isMarked(int index) const
{
    const Block& block = seek(index);
    return block.isMarked(index - m_cursor.start);
}

void IndexedSequence::setMarked(int index, bool marked)
{
    Block& block = seek(index);
    const int offset = index - m_cursor.start;
    if (block.isMarked(offset) == marked)
        return;
    block.setMarked(offset, marked);
    current().marked += marked ? 1 : -1;
    m_marked += marked ? 1 : -1;
}

int IndexedSequence::rank(int index) const
{
    if (index == m_size)
        return m_marked;
    const Block& block = seek(index);
    return m_cursor.startRank + block.markedBefore(index - m_cursor.start);
}

int IndexedSequence::select(int rank) const
{
    Q_ASSERT(rank >= 0 && rank < m_marked);
    while (rank < m_cursor.startRank)
        stepBackward();
    while (rank >= m_cursor.startRank + current().marked)
        stepForward();
    return m_cursor.start + current().block->selectMarked(rank - m_cursor.startRank);
}

IndexedSequence::Item* IndexedSequence::item(int index) const
{
    const Block& block = seek(index);
    return block.items ? block.items[index - m_cursor.start] : nullptr;
}

IndexedSequence::Item* IndexedSequence::setItem(int index, Item* item)
{
    Block& block = seek(index);
    if (item)
        block.makeItems();
    Item* const before = block.take(index - m_cursor.start);
    if (item)
        block.place(index - m_cursor.start, item);
    return before;
}

int IndexedSequence::indexOf(const Item& item) const
{
    Q_ASSERT(item.m_block);
    const Block& block = *item.m_block;
    seekBlock(block.ordinal);
    int offset = item.m_offset;
    if (block.items[offset] != &item) {
        Item* const* const items = block.items.get();
        offset = int(std::find(items, items + Capacity, &item) - items);
        item.m_offset = offset;
    }
    return m_cursor.start + offset;
}

/// Moves the cursor to the block with the place, the last block for the place past the end.
IndexedSequence::Block& IndexedSequence::seek(int index) const
{
    Q_ASSERT(index >= 0 && index <= m_size);
    if (static_cast<unsigned>(index - m_cursor.start) < static_cast<unsigned>(current().size))
        return *current().block; // mostly it is there already
    if (index == m_size)
        seekBlock(int(m_parts.size()) - 1);
    while (index < m_cursor.start)
        stepBackward();
    while (index >= m_cursor.start + current().size && m_cursor.block + 1 < int(m_parts.size()))
        stepForward();
    return *current().block;
}

void IndexedSequence::seekBlock(int block) const
{
    const int last = int(m_parts.size()) - 1;
    if (block == last) {
        m_cursor = {last, m_size - m_parts[last].size, m_marked - m_parts[last].marked};
    } else if (block < m_cursor.block / 2) {
        m_cursor = Cursor();
    }
    while (m_cursor.block > block)
        stepBackward();
    while (m_cursor.block < block)
        stepForward();
}

void IndexedSequence::stepForward() const
{
    m_cursor.start += current().size;
    m_cursor.startRank += current().marked;
    ++m_cursor.block;
}

void IndexedSequence::stepBackward() const
{
    --m_cursor.block;
    m_cursor.start -= current().size;
    m_cursor.startRank -= current().marked;
}

/// Has the cursor at a block that is not full, with the place at `offset`.
void IndexedSequence::makeRoom(int& offset)
{
    if (current().size == Capacity)
        split(m_cursor.block, offset);
    if (offset > current().size || current().size == Capacity) {
        offset -= current().size;
        stepForward();
    }
}

/// Halves a full block to make room at `offset`; past the end of the last one a new block is begun instead, so that a
/// list that is only appended to fills its blocks.
void IndexedSequence::split(int block, int offset)
{
    const bool isAppended = offset == Capacity && block + 1 == int(m_parts.size());
    const int moved = isAppended ? 0 : Capacity / 2;
    m_parts.reserve(m_parts.size() + 1); // the last step must not fail
    Part added{std::make_unique<Block>(block + 1), moved};
    if (m_parts[block].block->items)
        added.block->makeItems();
    added.block->takeOver(*m_parts[block].block, Capacity - moved, moved, 0);
    added.marked = added.block->markedBefore(moved);
    m_parts[block].size -= moved;
    m_parts[block].marked -= added.marked;
    m_parts.insert(m_parts.begin() + block + 1, std::move(added));
    renumber(block + 1);
}

/// Tells whether it has: there may be no next one, too little room for both, or no memory. Sparse blocks do no harm.
bool IndexedSequence::mergeWithNext(int block)
{
    Part& part = m_parts[block];
    if (block + 1 == int(m_parts.size()) || part.size + m_parts[block + 1].size > Capacity / 2)
        return false;
    const Part& next = m_parts[block + 1];
    try {
        if (next.block->items)
            part.block->makeItems();
    } catch (const std::bad_alloc&) {
        return false;
    }
    part.block->takeOver(*next.block, 0, next.size, part.size);
    part.size += next.size;
    part.marked += next.marked;
    removeBlock(block + 1);
    return true;
}

void IndexedSequence::removeBlock(int block)
{
    if (m_parts.size() == 1)
        return;
    m_parts.erase(m_parts.begin() + block);
    renumber(block);
    m_cursor = Cursor();
}

void IndexedSequence::renumber(int from)
{
    for (int block = from; block < int(m_parts.size()); ++block)
        m_parts[block].block->ordinal = block;
}

} // namespace iface::detail
