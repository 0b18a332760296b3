// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariant>

namespace zelctl {

/// What is printed: named values in the order in which they were added. QJsonObject would sort them, and who reads
/// the lines wants "answer" or "source" first and the arguments in the order of the signature.
class Record
{
public:
    struct Member
    {
        QString name;
        QVariant value; ///< A bool, an int, a QString, a Record or a QList<Record>.
    };

    /// An enumerator goes by its name; bytes are two members, "<name>Size" and "<name>Sha1".
    Record& add(const QString& name, const QVariant& value);
    /// All members of \a other behind those that are there.
    Record& append(const Record& other);

    const QList<Member>& members() const { return m_members; }
    /// A simple value as people read it; empty for lists, records and names that are not there.
    QString textOf(const QString& name) const;

private:
    QList<Member> m_members;
};

/// The enumerator's name, or the number for a value that has none.
QString nameOf(const QVariant& enumerator);

/// A simple value as people read it; empty for lists and records.
QString toText(const QVariant& value);

/// One JSON text without line breaks. A lone surrogate, which UTF-8 cannot carry, becomes U+FFFD.
QByteArray toJson(const Record& record);

} // namespace zelctl
