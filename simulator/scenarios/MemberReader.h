// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace zelcore {

/// What is wrong with a file of JSON, and with which member of it.
struct MemberProblem
{
    QString member; ///< As "timeline[0].command"; empty for all of it.
    QString what;   ///< Empty when nothing is.

    QString sentence() const { return member.isEmpty() ? what : member + u' ' + what; }
};

/// Where in a JSON text that is well formed each member stands.
class MemberLines
{
public:
    explicit MemberLines(const QByteArray& json);

    /// \a member is named as in MemberProblem; the first line for one that is not there.
    int of(const QString& member) const;
    /// The first member that stands in its object before; empty when none does.
    QString twice() const { return m_twice; }

private:
    QHash<QString, int> m_lines;
    QString m_twice;
};

/// Takes the members of an object one by one, and remembers the first thing that is wrong with any of them. What they
/// mean is for others to know.
class MemberReader
{
public:
    /// \a problem must outlive it.
    MemberReader(const QJsonObject& object, const QString& place, MemberProblem* problem)
        : m_object(object)
        , m_place(place)
        , m_problem(problem)
    {
    }

    const QString& place() const { return m_place; }
    QString placeOf(const QString& key) const { return m_place.isEmpty() ? key : m_place + u'.' + key; }
    QStringList keys() const { return m_object.keys(); }
    bool has(const QString& key) const { return m_object.contains(key); }

    /// A text, number or switch as the command language has it; \a preset when there is none.
    QString word(const QString& key, const QString& preset = QString());
    /// A text that must be there.
    QString text(const QString& key);
    /// A whole number that must be there and be from \a least to \a most.
    qint64 number(const QString& key, qint64 least, qint64 most);
    /// NAME=VALUE for every member that nobody took.
    QStringList fields();
    using Visit = std::function<void(MemberReader&)>;
    /// Calls \a visit with an object that is there, and ends it.
    void object(const QString& key, const Visit& visit);
    /// The same with each object of an array.
    void each(const QString& key, const Visit& visit);

    /// Whatever is left was misspelt.
    void end();
    void complain(const QString& key, const QString& what);

private:
    void read(const QJsonValue& value, const QString& place, const Visit& visit) const;

    QJsonObject m_object;
    QString m_place;
    MemberProblem* m_problem;
};

} // namespace zelcore
