// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QLatin1String>
#include <QtCore/QList>
#include <QtCore/QString>

#include <memory>
#include <variant>
#include <vector>

namespace zelctl {

class Record;

/// One named value of a record.
struct Member
{
    QLatin1String name;
    std::variant<bool, qint64, QString, QList<Record>, std::shared_ptr<const Record>> value;
};

/// What is printed: named values in the order in which they were added. QJsonObject would sort them, and who reads
/// the lines wants "answer" or "source" first and the arguments in the order of the signature.
class Record
{
public:
    Record& flag(QLatin1String name, bool value);
    Record& number(QLatin1String name, qint64 value);
    Record& text(QLatin1String name, const QString& value);
    Record& record(QLatin1String name, const Record& value);
    Record& list(QLatin1String name, const QList<Record>& value);
    /// Binary data as two members: "<prefix>Size" and "<prefix>Sha1". Both names must be literals.
    Record& bytes(QLatin1String sizeName, QLatin1String sha1Name, const QByteArray& data);

    /// All members of \a other behind those that are there.
    Record& append(const Record& other);

    const std::vector<Member>& members() const { return m_members; }
    const Member* find(QLatin1String name) const;
    /// A simple value as text; empty for lists, records and names that are not there.
    QString textOf(QLatin1String name) const;

private:
    std::vector<Member> m_members;
};

/// A simple value as people read it; empty for lists and records.
QString toText(const Member& member);

/// One JSON text without line breaks. A lone surrogate, which UTF-8 cannot carry, becomes U+FFFD.
QByteArray toJson(const Record& record);

} // namespace zelctl
