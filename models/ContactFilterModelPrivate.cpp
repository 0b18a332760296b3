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
    for (const PersonPointer& person : std::as_const(rows))
        person->row = -1;
    rows.clear();
}

void ContactFilterModel::Private::readAll()
{
    forgetAll();
    m_nameRole = std::max(q->role("displayName"), int(Qt::DisplayRole));
    m_handleRole = q->role("handle");
    m_statusRole = q->role("status");
    m_searchedRoles = {q->role("displayName"), m_handleRole, q->role("personalMessage"), q->role("statusMessage")};
    for (int count = q->sourceModel() ? q->sourceModel()->rowCount() : 0; count > 0; --count)
        rows.emplace_back(new Person);
    renumber(0);
    Newcomers newcomers = newcomersAmong(rows);
    enter(0, newcomers);
}

void ContactFilterModel::Private::renumber(qsizetype from)
{
    for (qsizetype row = from; row < rows.size(); ++row)
        rows.at(row)->row = int(row);
}

/// Whether what is announced leads to what is there. It does not if a slot before this one has changed the rows again,
/// whose announcement came first: then there is nothing to do but to read all.
bool ContactFilterModel::Private::isInStep(qsizetype count)
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
    if (!isInStep(rows.size() + count))
        return;
    rows.insert(first, count, {});
    for (PersonPointer& person : std::span(rows.begin() + first, count))
        person.reset(new Person);
    renumber(first);
    takeIn(rows.mid(first, count));
}

void ContactFilterModel::Private::rowsWent(int first, int last)
{
    const int count = last - first + 1;
    if (!isInStep(rows.size() - count))
        return;
    People gone = rows.mid(first, count);
    rows.remove(first, count);
    renumber(first);
    for (const PersonPointer& person : std::as_const(gone))
        person->row = -1;
    gone.removeIf([](const PersonPointer& person) { return !person->key; });
    std::sort(gone.begin(), gone.end(), [](const PersonPointer& left, const PersonPointer& right) {
        return left->key->compare(*right->key) < 0;
    });
    takeOut(gone);
}

void ContactFilterModel::Private::rowsMoved(int first, int last, int to)
{
    if (!isInStep(rows.size()))
        return;
    const auto begin = rows.begin();
    if (to < first)
        std::rotate(begin + to, begin + first, begin + last + 1);
    else
        std::rotate(begin + first, begin + last + 1, begin + to);
    renumber(std::min(first, to));
}

void ContactFilterModel::Private::dataChanged(int first, int last, const QList<int>& roles)
{
    if (!isInStep(rows.size()))
        return;
    const People changed = rows.mid(first, last - first + 1);
    const auto tell = [&](const Person& person) {
        const QModelIndex index = q->index(placeOf(person), 0);
        return isAliveAfter([&] { Q_EMIT q->dataChanged(index, index, roles); });
    };
    for (const PersonPointer& person : changed) {
        const bool stays = person->key && fits(*person);
        if ((stays && !tell(*person)) || !judge(person))
            return;
    }
}

// --- Who fits, and where ----------------------------------------------------------------------------------------

bool ContactFilterModel::Private::fits(const Person& person) const
{
    if (person.row == -1)
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

Key ContactFilterModel::Private::keyOf(const Person& person) const
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
    int first = 0;
    for (int last = shown.count(); first < last;) {
        const int middle = first + (last - first) / 2;
        if (shown.at(middle)->key->compare(key) < 0)
            first = middle + 1;
        else
            last = middle;
    }
    return first;
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
    for (int place = 0; place < shown.count(); ++place)
        all.push_back(shown.at(place));
    for (Person* const person : all)
        person->key = keyOf(*person);
    std::stable_sort(all.begin(), all.end(),
                     [](const Person* left, const Person* right) { return left->key->compare(*right->key) < 0; });
    shown.clear();
    std::copy(all.cbegin(), all.cend(), shown.room(0, int(all.size())));
}

// --- What is announced ------------------------------------------------------------------------------------------

bool ContactFilterModel::Private::judgeAll(bool onlyThoseShown)
{
    People leaving;
    for (int place = 0; place < shown.count(); ++place) {
        if (!fits(*shown.at(place)))
            leaving.emplace_back(shown.at(place));
    }
    return takeOut(leaving) && (onlyThoseShown || takeIn(rows));
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
        shown.remove(from, 1);
        person->key = key;
        shown.insert(to, person.data());
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
    Person** room = shown.room(place, int(newcomers.size()));
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
    for (const quint64 change = changes; !people.isEmpty() && change == changes;) {
        const int last = placeOf(*people.constLast());
        int count = 1;
        while (count <= last && count < people.size() &&
               shown.at(last - count) == people.at(people.size() - 1 - count).data())
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
        people.remove(people.size() - count, count);
    }
    return std::all_of(people.cbegin(), people.cend(), [this](const PersonPointer& person) { return judge(person); });
}

} // namespace vx::platform::zel
