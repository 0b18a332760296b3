// SPDX-License-Identifier: Apache-2.0
#include "PersonModel.h"

#include <iterator>
#include <variant>

using namespace Qt::StringLiterals;

namespace zeldesk {

namespace {

using zelcore::Person;

struct Field
{
    const char* label;
    std::variant<QString Person::*, int Person::*> member;
};

const Field fields[] = {
    {"Display name", &Person::displayName},
    {"Personal message", &Person::personalMessage},
    {"Status message", &Person::statusMessage},
    {"Handle", &Person::handle},
    {"ppId", &Person::ppId},
    {"Time zone", &Person::timeZone},
    {"Country", &Person::countryCode},
    {"App version", &Person::appVersion},
    {"Platform version", &Person::platformVersion},
    {"Client version", &Person::clientVersion},
};

} // namespace

PersonModel::PersonModel(zelcore::Simulator& simulator, QObject* parent)
    : QAbstractListModel(parent)
    , m_simulator(simulator)
{
    connect(&simulator, &zelcore::Simulator::profileChanged, this, [this] {
        if (m_userId.isEmpty())
            tellAll();
    });
    connect(&simulator, &zelcore::Simulator::worldReset, this, &PersonModel::tellAll);
    connect(&simulator, &zelcore::Simulator::contactChanged, this, [this](const QString& userId) {
        if (userId == m_userId)
            tellAll();
    });
}

void PersonModel::setUserId(const QString& userId)
{
    if (userId == m_userId)
        return;
    m_userId = userId;
    Q_EMIT userIdChanged();
    tellAll();
}

QString PersonModel::name() const
{
    const Person known = person();
    return known.displayName.isEmpty() ? known.handle : known.displayName;
}

void PersonModel::setBusy(bool busy)
{
    Person changed = person();
    changed.showBusy = busy;
    give(changed);
}

QString PersonModel::picture() const
{
    const QByteArray data = m_simulator.picture(person().avatarId);
    return data.isEmpty() ? u"none"_s : u"%L1 bytes"_s.arg(data.size());
}

int PersonModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(std::size(fields));
}

QVariant PersonModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Field& field = fields[index.row()];
    if (role == LabelRole || role == Qt::DisplayRole)
        return QString::fromLatin1(field.label);
    if (role != ValueRole)
        return {};
    const Person known = person();
    if (const auto* const number = std::get_if<int Person::*>(&field.member))
        return QString::number(known.**number);
    return known.*std::get<QString Person::*>(field.member);
}

bool PersonModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != ValueRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return false;
    const Field& field = fields[index.row()];
    Person changed = person();
    bool isReadable = true;
    if (const auto* const number = std::get_if<int Person::*>(&field.member))
        changed.** number = value.toInt(&isReadable);
    else
        changed.*std::get<QString Person::*>(field.member) = value.toString();
    const bool isDone = isReadable && give(changed);
    if (!isDone)
        Q_EMIT dataChanged(index, index);
    return isDone;
}

QHash<int, QByteArray> PersonModel::roleNames() const
{
    return {{LabelRole, "label"}, {ValueRole, "value"}};
}

void PersonModel::setPictureSize(int size)
{
    const QString picture = size > 0 ? QString::number(size) : u"none"_s;
    m_simulator.execute(m_userId.isEmpty() ? u"picture %1"_s.arg(picture)
                                           : u"contact picture '%1' %2"_s.arg(m_userId, picture));
}

zelcore::Person PersonModel::person() const
{
    return m_userId.isEmpty() ? m_simulator.profile() : m_simulator.contact(m_userId);
}

bool PersonModel::give(const zelcore::Person& person)
{
    if (!m_userId.isEmpty())
        return m_simulator.changeContact(person);
    m_simulator.setProfile(person);
    return m_simulator.profile() == person;
}

void PersonModel::tellAll()
{
    Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    Q_EMIT changed();
}

} // namespace zeldesk
