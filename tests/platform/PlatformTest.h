// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/Context.h>
#include <vx/system/ObjectServer.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMetaProperty>
#include <QtCore/QQueue>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUuid>
#include <QtTest/QTest>

#include <memory>
#include <utility>

/// A core service that has one user, three contacts and a box, which the user allows. It serves the platform object
/// below a PPS_ROOT of its own. What the library asks of the lists and the own picture is answered from the members
/// below; whatever else it writes is left to the test.
class Desk : public QObject
{
public:
    Desk();

    static QJsonObject json(const QByteArray& text) { return QJsonDocument::fromJson(text).object(); }
    QString root() const { return m_root.path(); }
    void goAway() { m_server.close(); }

    /// Each changes members of a record and tells the library.
    void changePermission(const QByteArray& members) { changeGlobal(QStringLiteral("permission"), members); }
    void changeState(const QString& state);
    void changeProfile(const QByteArray& members) { changeGlobal(QStringLiteral("platformProfile"), members); }
    void changeContact(const QString& name, const QByteArray& members);
    /// "u-<name>" to the service and "<name>" to the application, unless the members have another handle.
    void addContact(const QString& name, const QByteArray& members = "{}");

    void send(const QString& type, const QJsonObject& body);
    /// A message with elements of a list.
    void tell(const QString& message, const QString& list, const QJsonArray& elements);
    void tell(const QString& message, const QString& list, const QByteArray& element);
    void tellList(const QString& list);
    void tellStream(const QString& id, const QByteArray& data);

    /// Whether the library has handled everything sent so far: a mark follows and has come out at the other end.
    bool settle();
    /// The next message that was not answered, without the lines around it; empty after five seconds without any.
    QByteArray nextMessage();
    /// What the library has written since the last time and was not answered: what comes before a mark.
    QByteArrayList written();

    QMap<QString, QJsonObject> records; ///< the user's own by name, those of contacts by user id
    QMap<QString, QJsonArray> lists;    ///< those asked for whole, by type
    QStringList heldBack;               ///< lists, records and types of messages that are not answered yet

private:
    void changeGlobal(const QString& name, const QByteArray& members);
    void receive(const QByteArray& record);
    void answerElements(const QJsonObject& body);

    QTemporaryDir m_root;
    vx::system::ObjectServer m_server;
    QQueue<QByteArray> m_messages;
    int m_marks = 0;
};

/// Values as words.
template <typename... Values>
QString words(const Values&... values)
{
    return QStringList{QVariant::fromValue(values).toString()...}.join(u' ');
}

/// The properties of a public object or value, each as "name=value".
template <class Public>
QString shown(const Public& object)
{
    QStringList all;
    const QMetaObject& type = Public::staticMetaObject;
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
        QVariant value;
        if constexpr (std::is_base_of_v<QObject, Public>)
            value = type.property(i).read(&object);
        else
            value = type.property(i).readOnGadget(&object);
        all.append(QLatin1String(type.property(i).name()) + u'=' + value.toString());
    }
    return all.join(u' ');
}

/// What was announced, a line each, in order.
class Heard : public QObject
{
public:
    /// The arguments of a signal behind \a name and, behind a bar, what is shown by then.
    template <class Public, typename... Arguments>
    void note(const Public& object, void (Public::*signal)(Arguments...), const QString& name,
              const std::function<QString()>& shows = {})
    {
        connect(&object, signal, this, [this, name, shows](const Arguments&... arguments) {
            add((name + u' ' + words(arguments...)).trimmed() + (shows ? QStringLiteral(" | ") + shows() : QString()));
        });
    }
    void add(const QString& line) { m_lines.append(line); }

    const QStringList& lines() const { return m_lines; }
    QStringList take() { return std::exchange(m_lines, {}); }

private:
    QStringList m_lines;
};

/// Each case has a service of its own, and the library begins as in a new process.
class PlatformTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

protected:
    /// The context of an application that is registered and has everything.
    vx::platform::zel::Context* ready();
    /// What the library has warned of since it was asked last.
    static QStringList takeWarnings();

    QUuid const m_uuid{QStringLiteral("{6F8D2C4E-5B0A-4A37-9D0E-0C8F3F1F2A10}")};
    std::unique_ptr<Desk> m_desk;
    std::unique_ptr<vx::platform::zel::Context> m_context;
};
