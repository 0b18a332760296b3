// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/ScriptedCore.h>

#include <vx/platform/zel/Context.h>

#include <QtCore/QJsonArray>
#include <QtCore/QMap>
#include <QtTest/QSignalSpy>

/// A core service that has one user, some contacts and a box, and an application before it. What the library asks of
/// the lists is answered from the members below; whatever else it writes is left to the test.
class Desk
{
public:
    Desk();

    /// Each changes the members of the record and tells the library.
    void changePermission(const QByteArray& members) { change(QStringLiteral("permission"), members); }
    void changeState(const QString& state);
    void changeProfile(const QByteArray& members) { change(QStringLiteral("platformProfile"), members); }

    void sendList(const QString& type);
    void sendElements(const QString& message, const QString& type, const QJsonArray& elements);
    void sendStream(const QString& id, const QByteArray& data);

    /// A contact's record, known by "u-<name>" to the service and by "<name>" to the application, unless
    /// the members have another handle.
    QJsonObject contact(const QString& name, const QByteArray& members = "{}");
    static QJsonObject contactId(const QString& name)
    {
        return {{QStringLiteral("userId"), QString(QStringLiteral("u-") + name)}};
    }

    /// Whether the library has handled everything sent so far: a mark follows and has come out at the other end.
    bool settle();
    /// Whether nothing that the library wrote so far waits to be read: a mark follows, and is the only one there.
    bool nothingWritten();
    /// Registers; the very first permission record says so if the library has had none. All that it takes is answered.
    bool becomeAllowed();

    QJsonObject& permission() { return globals[QStringLiteral("permission")]; }
    QJsonObject& profile() { return globals[QStringLiteral("platformProfile")]; }

    ScriptedCore core;
    QMap<QString, QJsonObject> globals{
        {QStringLiteral("permission"), ScriptedCore::json(R"({"showAppBox":false,"zelInvites":false,
            "registrationState":"Unregistered","zelSetup":true})")},
        {QStringLiteral("platformProfile"), ScriptedCore::json(R"({"userId":"me","handle":"my-handle","ppid":"my-ppid",
            "appVersion":"1.2","displayName":"Ada","personalMessage":"Hello","currentStatus":"here","avatarId":"",
            "platformVersion":200,"clientVersion":77,"showBusy":false})")}};
    QMap<QString, QMap<QString, QJsonObject>> records; ///< of lists asked for by key: by type, by key
    QMap<QString, QJsonArray> lists;                   ///< of lists asked for whole: by type
    QMap<QString, QByteArray> pictures;                ///< by stream id
    QStringList heldBack;                              ///< lists, and global elements, that are not answered yet

private:
    void change(const QString& name, const QByteArray& members);
    void sendChunk(const QString& type, const QJsonArray& elements);
    void answerElements(const QJsonObject& body);

    int m_marks = 0;
    bool m_permissionAnswered = false;
};
