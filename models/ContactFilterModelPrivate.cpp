// SPDX-License-Identifier: Apache-2.0
#include "ContactFilterModelPrivate.h"

#include <vx/platform/zel/UserStatus.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace vx::platform::zel {

// --- The source model -------------------------------------------------------------------------------------------

void ContactFilterModel::Private::follow(QAbstractItemModel* model)
{
    link = std::make_unique<QObject>();
    if (!model)
        return;
    const auto listen = [&](auto signal, auto slot) { connect(model, signal, link.get(), slot); };
    const auto ofList = [this](auto slot) {
        return [this, slot](const QModelIndex& parent, int first, int last) {
            if (!parent.isValid())
                (this->*slot)(first, last);
        };
    };
    const auto beginReset = [this] { q->beginResetModel(); };
    const auto reset = [this] {
        readAll();
        q->endResetModel();
    };
    listen(&QAbstractItemModel::rowsInserted, ofList(&Private::rowsCame));
    listen(&QAbstractItemModel::rowsRemoved, ofList(&Private::rowsWent));
    listen(&QAbstractItemModel::rowsMoved,
           [this](const QModelIndex&, int first, int last, const QModelIndex&, int to) { rowsMoved(first, last, to); });
    listen(&QAbstractItemModel::dataChanged,
           [this](const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
               dataChanged(first.row(), last.row(), roles);
           });
    listen(&QAbstractItemModel::modelAboutToBeReset, beginReset);
    listen(&QAbstractItemModel::modelReset, reset);
    listen(&QAbstractItemModel::layoutAboutToBeChanged, beginReset);
    listen(&QAbstractItemModel::layoutChanged, reset);
    listen(&QObject::destroyed, [this] {
        q->beginResetModel();
        forgetAll();
        q->endResetModel();
    });
}

void ContactFilterModel::Private::forgetAll()
{
    ++changes;
    for (int place = 0; place < shown.count(); ++place)
        shown.at(place)->key.reset();
    shown.clear();
    openRowsAt(rows.count()); // so that nobody is numbered from the end
    for (const PersonPointer& person : peopleAt(0, rows.count()))
        person->number = -1;
    rows.clear();
}

void ContactFilterModel::Private::readAll()
{
    forgetAll();
    m_nameRole = std::max(q->role("displayName"), int(Qt::DisplayRole));
    m_handleRole = q->role("handle");
    m_statusRole = q->role("status");
    m_searchedRoles = {q->role("displayName"), m_handleRole, q->role("personalMessage"), q->role("statusMessage")};
    Newcomers newcomers = newcomersAmong(add(0, q->sourceModel() ? q->sourceModel()->rowCount() : 0));
    enter(0, newcomers);
}

/// Before rows change there: those between where they changed last and here are numbered from the other side now.
void ContactFilterModel::Private::openRowsAt(int row)
{
    const auto [first, last] = std::minmax({rows.gap(), row});
    for (int i = first; i < last; ++i) {
        rows.at(i)->isFromEnd = row == first;
        rows.at(i)->number = row == first ? rows.count() - 1 - i : i;
    }
    rows.openAt(row);
}

ContactFilterModel::Private::People ContactFilterModel::Private::add(int row, int count)
{
    openRowsAt(row);
    for (PersonPointer& person : rows.insert(row, count)) {
        person.reset(new Person);
        person->number = row++;
    }
    return peopleAt(row - count, count);
}

ContactFilterModel::Private::People ContactFilterModel::Private::peopleAt(int row, int count) const
{
    People people;
    while (count-- > 0)
        people.push_back(rows.at(row++));
    return people;
}

/// Whether what is announced leads to what is there. It does not if a slot before this one has changed the rows again,
/// whose announcement came first: then there is nothing to do but to read all.
bool ContactFilterModel::Private::isInStep(int count)
{
    ++changes;
    if (count == q->sourceModel()->rowCount())
        return true;
    q->beginResetModel();
    readAll();
    q->endResetModel();
    return false;
}

void ContactFilterModel::Private::rowsCame(int first, int last)
{
    const int count = last - first + 1;
    if (isInStep(rows.count() + count))
        takeIn(add(first, count));
}

void ContactFilterModel::Private::rowsWent(int first, int last)
{
    const int count = last - first + 1;
    if (!isInStep(rows.count() - count))
        return;
    openRowsAt(last + 1);
    People gone = peopleAt(first, count);
    rows.remove(first, count);
    for (const PersonPointer& person : gone)
        person->number = -1;
    std::erase_if(gone, [](const PersonPointer& person) { return !person->key; });
    std::sort(gone.begin(), gone.end(), [](const PersonPointer& left, const PersonPointer& right) {
        return left->key->compare(*right->key) < 0;
    });
    takeOut(gone);
}

void ContactFilterModel::Private::rowsMoved(int first, int last, int to)
{
    if (!isInStep(rows.count()))
        return;
    openRowsAt(last + 1);
    const int count = last - first + 1;
    const People moved = peopleAt(first, count);
    rows.remove(first, count);
    int row = to > first ? to - count : to;
    openRowsAt(row);
    std::copy(moved.cbegin(), moved.cend(), rows.insert(row, count).begin());
    for (const PersonPointer& person : moved)
        person->number = row++;
}

void ContactFilterModel::Private::dataChanged(int first, int last, const QList<int>& roles)
{
    if (!isInStep(rows.count()))
        return;
    const auto tell = [&](const Person& person) {
        const QModelIndex index = q->index(placeOf(person), 0);
        return isAliveAfter([&] { Q_EMIT q->dataChanged(index, index, roles); });
    };
    for (const PersonPointer& person : peopleAt(first, last - first + 1)) {
        const bool stays = person->key && fits(*person);
        if ((stays && !tell(*person)) || !judge(person))
            return;
    }
}

// --- Who fits, and where ----------------------------------------------------------------------------------------

bool ContactFilterModel::Private::fits(const Person& person) const
{
    if (person.number == -1)
        return false;
    if (presence != Anybody) {
        const auto status = read(person, m_statusRole).value<UserStatus::Type>();
        if ((status == UserStatus::Available) != (presence == Available))
            return false;
    }
    if (words.isEmpty())
        return true;
    QString searched;
    for (const int role : m_searchedRoles)
        searched += read(person, role).toString() + u'\n';
    return std::all_of(words.cbegin(), words.cend(),
                       [&](const QString& word) { return searched.contains(word, Qt::CaseInsensitive); });
}

ContactFilterModel::Private::Key ContactFilterModel::Private::keyOf(const Person& person) const
{
    const QString name = read(person, m_nameRole).toString();
    // Without a language the collator's keys differ by capitals, although its comparisons do not.
    return {collator.sortKey(locale.language() == QLocale::C ? name.toCaseFolded() : name),
            read(person, m_handleRole).toString()};
}

ContactFilterModel::Private::Newcomers ContactFilterModel::Private::newcomersAmong(const People& people) const
{
    Newcomers newcomers;
    for (const PersonPointer& person : people) {
        if (!person->key && fits(*person))
            newcomers.push_back({keyOf(*person), person});
    }
    std::stable_sort(newcomers.begin(), newcomers.end(),
                     [](const Newcomer& left, const Newcomer& right) { return left.key.compare(right.key) < 0; });
    return newcomers;
}

/// Behind all who come before it.
int ContactFilterModel::Private::placeFor(const Key& key) const
{
    return shown.firstNot([&](const Person* person) { return person->key->compare(key) < 0; });
}

int ContactFilterModel::Private::placeOf(const Person& person) const
{
    int place = placeFor(*person.key);
    while (shown.at(place) != &person) // other models may have several of one name and handle
        ++place;
    return place;
}

void ContactFilterModel::Private::layOut()
{
    std::vector<Person*> all;
    all.reserve(size_t(shown.count()));
    for (int place = 0; place < shown.count(); ++place)
        all.push_back(shown.at(place));
    for (Person* const person : all)
        person->key = keyOf(*person);
    std::stable_sort(all.begin(), all.end(),
                     [](const Person* left, const Person* right) { return left->key->compare(*right->key) < 0; });
    shown.clear();
    std::copy(all.cbegin(), all.cend(), shown.insert(0, int(all.size())).begin());
}

// --- What is announced ------------------------------------------------------------------------------------------

bool ContactFilterModel::Private::judgeAll(bool onlyThoseShown)
{
    People leaving;
    for (int place = 0; place < shown.count(); ++place) {
        if (!fits(*shown.at(place)))
            leaving.emplace_back(shown.at(place));
    }
    return takeOut(leaving) && (onlyThoseShown || takeIn(peopleAt(0, rows.count())));
}

/// Puts one where the person belongs by now.
bool ContactFilterModel::Private::judge(const PersonPointer& person)
{
    if (!person->key)
        return takeIn({person});
    if (!fits(*person))
        return takeOut({person});
    const Key key = keyOf(*person);
    if (key.compare(*person->key) == 0)
        return true;
    const int from = placeOf(*person);
    const int before = placeFor(key);
    const int to = before > from ? before - 1 : before;
    const auto move = [&] {
        person->key = key;
        shown.move(from, to);
    };
    if (to == from) {
        move();
        return true;
    }
    return isAliveAfter([&] {
        q->beginMoveRows({}, from, from, {}, before);
        move();
        q->endMoveRows();
    });
}

void ContactFilterModel::Private::enter(int place, std::span<Newcomer> newcomers)
{
    auto room = shown.insert(place, int(newcomers.size())).begin();
    for (Newcomer& newcomer : newcomers) {
        newcomer.person->key = std::move(newcomer.key);
        *room++ = newcomer.person.data();
    }
}

/// Those of them who fit and are not shown, the last first. What changes meanwhile makes what was judged old; the rest
/// are then judged one by one.
bool ContactFilterModel::Private::takeIn(const People& people)
{
    Newcomers newcomers = newcomersAmong(people);
    for (const quint64 change = changes; !newcomers.empty() && change == changes;) {
        const int place = placeFor(newcomers.back().key);
        const Key* const before = place > 0 ? &*shown.at(place - 1)->key : nullptr;
        auto first = newcomers.end() - 1;
        while (first != newcomers.begin() && (!before || before->compare(std::prev(first)->key) < 0))
            --first;
        const bool isAlive = isAliveAfter([&] {
            q->beginInsertRows({}, place, place + int(newcomers.end() - first) - 1);
            enter(place, {first, newcomers.end()});
            q->endInsertRows();
        });
        if (!isAlive)
            return false;
        newcomers.erase(first, newcomers.end());
    }
    return std::all_of(newcomers.cbegin(), newcomers.cend(),
                       [this](const Newcomer& newcomer) { return judge(newcomer.person); });
}

/// People who are shown, in order, the last first, and like takeIn().
bool ContactFilterModel::Private::takeOut(People people)
{
    for (const quint64 change = changes; !people.empty() && change == changes;) {
        const int last = placeOf(*people.back());
        int count = 1;
        while (count <= last && count < int(people.size()) && shown.at(last - count) == people.end()[-1 - count].data())
            ++count;
        const bool isAlive = isAliveAfter([&] {
            q->beginRemoveRows({}, last - count + 1, last);
            for (int i = 0; i < count; ++i)
                shown.at(last - i)->key.reset();
            shown.remove(last - count + 1, count);
            q->endRemoveRows();
        });
        if (!isAlive)
            return false;
        people.resize(people.size() - size_t(count));
    }
    return std::all_of(people.cbegin(), people.cend(), [this](const PersonPointer& person) { return judge(person); });
}

} // namespace vx::platform::zel
