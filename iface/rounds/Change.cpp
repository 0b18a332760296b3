// SPDX-License-Identifier: Apache-2.0
#include <iface/Change.h>

#include <iface/detail/MakeShared.h>

#include <new>

namespace iface {

namespace {

/// Each is asked through the one before it, for every item: many cost more than taking everything in anew.
constexpr int MostComposed = 100;

/// Two changes in a row, each of which moved items.
class ComposedMapper : public ObservableListImpl::IndexMapper
{
public:
    ComposedMapper(const Change::Mapper& first, const Change::Mapper& second)
        : m_first(first)
        , m_second(second)
        , m_count(countOf(first) + countOf(second))
    {
    }

    /// How many changes a mapper is made of.
    static int countOf(const Change::Mapper& mapper)
    {
        const auto* const composed = dynamic_cast<const ComposedMapper*>(mapper.data());
        return composed ? composed->m_count : 1;
    }

    bool newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const override
    {
        QVariantList between;
        return m_first->newIndexPath(&between, removed, oldPath) && m_second->newIndexPath(newPath, removed, between);
    }

private:
    const Change::Mapper m_first;
    const Change::Mapper m_second;
    const int m_count;
};

/// A Reset where they are too many or there is no memory.
Change composed(const Change::Mapper& first, const Change::Mapper& second)
{
    if (ComposedMapper::countOf(first) + ComposedMapper::countOf(second) > MostComposed)
        return {Change::Reset};
    try {
        return {Change::Moved, -1, detail::makeShared<ComposedMapper>(first, second)};
    } catch (const std::bad_alloc&) {
        return {Change::Reset};
    }
}

bool leavesIndexes(const Change& change)
{
    return change.kind == Change::Updated || change.kind == Change::Data;
}

} // namespace

Change Change::wholesale(Type type, const Mapper& mapper)
{
    using Types = ObservableListImpl::ChangeType;
    return {type == Types::Reset ? Reset : type == Types::DataChanged ? Data : Moved, -1, mapper};
}

Change::Type Change::type() const
{
    using Types = ObservableListImpl::ChangeType;
    return kind == Moved ? Types::IndexesChanged : kind == Data ? Types::DataChanged : Types::Reset;
}

Change detail::mergedBoth(const Change& first, const Change& second)
{
    // A plain change says nothing that any other does not say.
    if (first.kind == Change::Plain)
        return second;
    if (second.kind <= Change::Keys)
        return first;
    if (first.kind == Change::Moved && second.kind == Change::Moved && first.mapper && second.mapper)
        return composed(first.mapper, second.mapper);
    if (leavesIndexes(first) && leavesIndexes(second))
        return first.kind == second.kind && first.index == second.index ? second : Change{Change::Data};
    return {Change::Reset};
}

} // namespace iface
