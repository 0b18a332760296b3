// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ContactOrder.h"

#include <vx/platform/zel/ContactFilterModel.h>

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QStringList>

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace vx::platform::zel {

/// Who of the source model fits, in which order, and what is announced of that.
class ContactFilterModel::Private
{
public:
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
    bool isInStep(qsizetype count);
    void rowsCame(int first, int last);
    void rowsWent(int first, int last);
    void rowsMoved(int first, int last, int to);
    void dataChanged(int first, int last, const QList<int>& roles);

    // Each answers false when a slot has destroyed the model.
    bool judgeAll(bool onlyThoseShown);
    bool judge(const PersonPointer& person);

    int placeOf(const Person& person) const;

    ContactFilterModel* const q;
    std::unique_ptr<QObject> link; // what listens to the source model
    People rows;                   // as the source model has them
    ContactOrder shown;

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
    void renumber(qsizetype from);
    QVariant read(const Person& person, int role) const { return q->sourceModel()->index(person.row, 0).data(role); }

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
