// SPDX-License-Identifier: Apache-2.0
#include <simulator/world/Box.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

// What applications may put into one item.
constexpr qsizetype longestText = 100;
constexpr qsizetype mostLineBreaks = 2;
constexpr qsizetype longestCookie = 128;

/// Null when there is none.
template <typename Record>
const Record* findById(const QList<Record>& records, const QString& id)
{
    const auto found =
        std::find_if(records.cbegin(), records.cend(), [&](const Record& record) { return record.id == id; });
    return found == records.cend() ? nullptr : &*found;
}

template <typename Record>
bool removeById(QList<Record>& records, const QString& id)
{
    return records.removeIf([&](const Record& record) { return record.id == id; }) > 0;
}

QString noItem(const QString& id)
{
    return u"no item has the id \"%1\""_s.arg(id);
}

QString noIcon(const QString& id)
{
    return u"no icon has the id \"%1\""_s.arg(id);
}

} // namespace

const BoxItem* Box::item(const QString& id) const
{
    return findById(m_items, id);
}

const BoxIcon* Box::icon(const QString& id) const
{
    return findById(m_icons, id);
}

QString Box::itemProblem(const BoxItem& item, bool iconIsComing) const
{
    if (m_limit >= 0 && m_items.size() >= m_limit)
        return u"the box is full: it takes %1 items"_s.arg(m_limit);
    return fieldProblem(item, iconIsComing);
}

QString Box::fieldProblem(const BoxItem& item, bool iconIsComing) const
{
    if (item.text.isEmpty())
        return u"an item needs a text"_s;
    if (item.text.size() > longestText)
        return u"an item's text has at most %1 characters, not %2"_s.arg(longestText).arg(item.text.size());
    if (item.text.count(u'\n') + item.text.count(u'\r') > mostLineBreaks)
        return u"an item's text has at most %1 line breaks"_s.arg(mostLineBreaks);
    if (item.cookie.size() > longestCookie)
        return u"an item's cookie has at most %1 characters, not %2"_s.arg(longestCookie).arg(item.cookie.size());
    return item.iconId.isEmpty() || iconIsComing || icon(item.iconId) ? QString() : noIcon(item.iconId);
}

QString Box::addItem(BoxItem& item)
{
    const QString problem = itemProblem(item);
    if (!problem.isEmpty())
        return problem;
    item.id = u"item-%1"_s.arg(m_nextItem++);
    m_items.append(item);
    return {};
}

QString Box::changeItem(const BoxItem& item, bool* isAnother)
{
    const BoxItem* before = this->item(item.id);
    const QString problem = before ? fieldProblem(item, false) : noItem(item.id);
    *isAnother = problem.isEmpty() && *before != item;
    if (*isAnother)
        m_items[before - m_items.constData()] = item;
    return problem;
}

QString Box::removeItem(const QString& id)
{
    return removeById(m_items, id) ? QString() : noItem(id);
}

QString Box::iconProblem(const QString& id) const
{
    const int number = id.toInt();
    if (number < 0 || QString::number(number) != id)
        return u"\"%1\" is no icon id"_s.arg(id);
    return icon(id) ? u"the icon %1 is registered already"_s.arg(id) : QString();
}

QString Box::removeIcon(const QString& id)
{
    return removeById(m_icons, id) ? QString() : noIcon(id);
}

} // namespace zelcore
