// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "GapList.h"

#include <vx/platform/zel/ContactFilterModel.h>

#include <QtCore/QCollator>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QSharedData>
#include <QtCore/QStringList>

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vx::platform::zel {

/// Who of the source model fits, in which order, and what is announced of that.
class ContactFilterModel::Private
{
public:
    /// By what people are in order: the name as the locale has it, and for one name the handle.
    struct Key
    {
        QCollatorSortKey name;
        QString handle;

        int compare(const Key& other) const
        {
            const int byName = name.compare(other.name);
            return byName != 0 ? byName : handle.compare(other.handle);
        }
    };

    /// A row of the source model. Whoever is at work on it holds it while slots run, in which it may go.
    struct Person : QSharedData
    {
        /// Where the source model has it, from the beginning or, behind where rows changed last, from the end: so all
        /// changes of a sweep together count no more rows anew than one of them.
        int number = -1; ///< -1 when it is gone from there
        bool isFromEnd = false;
        /// While it is shown: of the place where it is, not of what its source says by now.
        std::optional<Key> key;
    };
    using PersonPointer = QExplicitlySharedDataPointer<Person>;
    using People = std::vector<PersonPointer>;

    explicit Private(ContactFilterModel* model)
        : q(model)
    {
        collator.setCaseSensitivity(Qt::CaseInsensitive);
    }

    void follow(QAbstractItemModel* model);
    void forgetAll();
    void readAll();
    void layOut();

    // What the source model announces. Its rows are right before anything is announced in turn.
    bool isInStep(int count);
    void rowsCame(int first, int last);
    void rowsWent(int first, int last);
    void rowsMoved(int first, int last, int to);
    void dataChanged(int first, int last, const QList<int>& roles);

    // Each answers false when a slot has destroyed the model.
    bool judgeAll(bool onlyThoseShown);
    bool judge(const PersonPointer& person);

    int placeOf(const Person& person) const;
    int rowOf(const Person& person) const
    {
        return person.isFromEnd ? rows.count() - 1 - person.number : person.number;
    }

    ContactFilterModel* const q;
    std::unique_ptr<QObject> link; // what listens to the source model
    GapList<PersonPointer> rows;   // as the source model has them
    GapList<Person*> shown;        // in order

    QString searchText;
    QStringList words; // of the search text
    Presence presence = Anybody;
    QLocale locale;
    QCollator collator{locale};
    /// Of the source model and of what is looked for, so that whoever announces knows when what was judged is old.
    quint64 changes = 0;

private:
    struct Newcomer
    {
        Key key;
        PersonPointer person;
    };
    using Newcomers = std::vector<Newcomer>;

    bool fits(const Person& person) const;
    Key keyOf(const Person& person) const;
    Newcomers newcomersAmong(const People& people) const;
    int placeFor(const Key& key) const;
    void enter(int place, std::span<Newcomer> newcomers);
    void openRowsAt(int row);
    People add(int row, int count);
    People peopleAt(int row, int count) const;
    QVariant read(const Person& person, int role) const { return q->sourceModel()->index(rowOf(person), 0).data(role); }

    bool takeIn(const People& people);
    bool takeOut(People people);
    template <typename Announce>
    bool isAliveAfter(Announce announce)
    {
        const QPointer<ContactFilterModel> alive(q);
        announce();
        return alive;
    }

    // Roles of the source model.
    int m_nameRole = -1;
    int m_handleRole = -1;
    int m_statusRole = -1;
    std::array<int, 4> m_searchedRoles{};
};

} // namespace vx::platform::zel
