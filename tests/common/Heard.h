// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QCryptographicHash>
#include <QtCore/QHash>
#include <QtCore/QMetaMethod>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <functional>
#include <utility>

/// What objects have announced, a line for each signal, in order: its name, its arguments and, behind a bar, what was
/// shown by then. What would be tedious to read is told by its hash.
class Heard : public QObject
{
public:
    void follow(const QObject& object, const std::function<QString()>& shows = {})
    {
        m_shows.insert(&object, shows);
        const QMetaObject& type = *object.metaObject();
        for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
            if (type.method(i).methodType() == QMetaMethod::Signal)
                QMetaObject::connect(&object, i, this, staticMetaObject.methodCount(), Qt::DirectConnection);
        }
    }
    void add(const QString& line) { m_lines.append(line); }

    const QStringList& lines() const { return m_lines; }
    QStringList take() { return std::exchange(m_lines, {}); }

    /// Takes the signals, whatever their arguments, in the place behind the last method.
    int qt_metacall(QMetaObject::Call call, int method, void** arguments) override
    {
        if (call != QMetaObject::InvokeMetaMethod || method != staticMetaObject.methodCount())
            return QObject::qt_metacall(call, method, arguments);
        const QMetaMethod signal = sender()->metaObject()->method(senderSignalIndex());
        QString line = QString::fromLatin1(signal.name());
        for (int i = 0; i < signal.parameterCount(); ++i) {
            const QVariant value(signal.parameterMetaType(i), arguments[i + 1]);
            const QByteArray bytes = value.toByteArray();
            const auto hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
            line += u' ' + (bytes.size() < 100 ? value.toString() : QString::fromLatin1(hash));
        }
        const auto shows = m_shows.value(sender());
        add(line.trimmed() + (shows ? QStringLiteral(" | ") + shows() : QString()));
        return -1;
    }

private:
    QHash<const QObject*, std::function<QString()>> m_shows;
    QStringList m_lines;
};
