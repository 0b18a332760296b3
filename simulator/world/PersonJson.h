// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QStringList>

namespace zelcore {

/// The members of a person as they travel.
QJsonObject personToJson(const Person& person);

/// Only the members in which \a after differs from \a before.
QJsonObject personDifference(const Person& before, const Person& after);

/// Takes over the members that \a change holds. Empty, or what is wrong with it; then \a person is as it was.
/// Members that no person has are ignored.
QString mergePerson(const QJsonObject& change, Person& person);

/// Sets one field by the name it has in the command language. Empty, or what is wrong.
QString setPersonField(const QString& name, const QString& value, Person& person);

/// The names of the fields in the command language, in their usual order.
QStringList personFieldNames();

/// Name and value of every field that is not empty.
QList<QStringList> describePerson(const Person& person);

} // namespace zelcore
