// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/detail/FilteredListBase.h>
#include <iface/FilterFunctionIndexMapper.h>
#include <iface/ObservableList.h>

#include <boost/function.hpp>

#include <utility>

namespace iface {

/// The items of an input list that pass a filter, in the input's order.
///
/// It follows the input, and everything that the filter read when it judged an item: when that changes, the filter
/// judges the item again, that item alone, and only a verdict that turned is announced. The filter is called once for
/// each item at first, and then only for items that are new or changed; it gets the item, may read any observable, and
/// what it reads is hooked and unhooked by the difference to its last call for the item.
///
/// Announcements: an item that comes, goes or changes while it passes is itemAdded, itemRemoved or itemUpdated, and so
/// is one that starts or ceases to pass because its content changed. Verdicts that turn because something else changed
/// that the filter had read are one itemsChanged(IndexesChanged) with a FilterFunctionIndexMapper. Wholesale changes of
/// the input are passed on, IndexesChanged with a mapper of this list's own positions.
///
/// An input that forgets items (announcesEveryReadItem() is false) need not announce that one of them changed. What
/// such an input read to make its items counts as read by the filter, so the verdicts stay right all the same; but that
/// an item that passes has another content is then announced only if the input announces it.
///
/// What turns in one round is judged before anybody is told, and announced as one change (see Round). A filter may read
/// other derived lists, and finds them up to date.
///
/// It holds its input for its whole life. Handlers may do whatever an observer may. The filter should only judge:
/// should it change the input while it is called, the list is made anew and announced as a Reset; an item for which it
/// throws does not pass, and the exception goes on to whoever made the change, after the list has been announced.
/// One thread.
template <class T>
class FilteredObservableList : public detail::FilteredListBase
{
public:
    using Filter = boost::function<bool(const T&)>;

    /// Throws what the filter throws; `boost::bad_function_call` if it is empty and there is an item.
    static ObservableList<T> create(const ObservableList<T>& input, Filter filter);

    ~FilteredObservableList() override { this->close(); }

private:
    FilteredObservableList(const ObservableList<T>& input, Filter filter)
        : FilteredListBase(input.impl())
        , m_filter(std::move(filter))
    {
    }

    bool passes(const QVariant& item) const override { return m_filter(item.value<T>()); }

    const Filter m_filter;
};

template <class T>
ObservableList<T> FilteredObservableList<T>::create(const ObservableList<T>& input, Filter filter)
{
    auto* list = new FilteredObservableList(input, std::move(filter));
    const ObservableList<T> handle(list);
    list->reset();
    return handle;
}

} // namespace iface
