// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QEventLoop>

using namespace vx::platform::zel;

/// One process, one bridge: the cases build on each other.
class TstUserProfile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_desk.profile().insert(QStringLiteral("avatarId"), QStringLiteral("first"));
        m_desk.profile().insert(QStringLiteral("avatarMimeType"), QStringLiteral("image/png"));
        m_desk.pictures.insert(QStringLiteral("first"), "first picture");
        m_context = std::make_unique<Context>(QUuid::createUuid());
        QVERIFY(m_desk.becomeAllowed());
    }

    void showsTheRecordFieldByField()
    {
        QCOMPARE(profile().displayName(), QStringLiteral("Ada"));
        QCOMPARE(profile().personalMessage(), QStringLiteral("Hello"));
        QCOMPARE(profile().status(), UserStatus::Available);
        QCOMPARE(profile().statusMessage(), QStringLiteral("here"));
        QCOMPARE(profile().ppId(), QStringLiteral("my-ppid"));
        QCOMPARE(profile().handle(), QStringLiteral("my-handle"));
        QCOMPARE(profile().displayPictureMimeType(), ImageType::Png);
        QCOMPARE(profile().applicationVersion(), QStringLiteral("1.2"));
        QCOMPARE(profile().zelVersion(), 77);
        QCOMPARE(profile().sdkVersion(), 200);
        QCOMPARE(profile().displayPicture(), QByteArray("first picture")); // it came before this object
    }

    void announcesEachChangeOnceAndInOrder()
    {
        QStringList order; // each value is shown before it is announced
        QObject owner;
        connect(&profile(), &UserProfile::displayNameUpdated, &owner, [&](const QString& value) {
            order += QStringLiteral("name ") + value;
            QCOMPARE(profile().displayName(), value);
        });
        connect(&profile(), &UserProfile::personalMessageUpdated, &owner, [&](const QString& value) {
            order += QStringLiteral("message ") + value;
            QCOMPARE(profile().personalMessage(), value);
        });
        connect(&profile(), &UserProfile::statusUpdated, &owner, [&](UserStatus::Type status, const QString& message) {
            order += QStringLiteral("status %1 %2").arg(status).arg(message);
            QCOMPARE(profile().status(), status);
            QCOMPARE(profile().statusMessage(), message);
        });
        m_desk.changeProfile(R"({"showBusy":true,"currentStatus":"out","personalMessage":"Bye","displayName":"A"})");
        m_desk.changeProfile(R"({"showBusy":true,"currentStatus":"out","personalMessage":"Bye","displayName":"A"})");
        m_desk.changeProfile(R"({"currentStatus":"far out"})");
        QVERIFY(m_desk.settle());
        const QStringList expected{QStringLiteral("name A"), QStringLiteral("message Bye"),
                                   QStringLiteral("status 2 out"), QStringLiteral("status 2 far out")};
        QCOMPARE(order, expected);
    }

    void keepsWhatNeverChanges()
    {
        m_desk.changeProfile(R"({"ppid":"other","handle":"other","appVersion":"9","clientVersion":9})");
        QVERIFY(m_desk.settle());
        QCOMPARE(profile().ppId(), QStringLiteral("my-ppid"));
        QCOMPARE(profile().handle(), QStringLiteral("my-handle"));
        QCOMPARE(profile().applicationVersion(), QStringLiteral("1.2"));
        QCOMPARE(profile().zelVersion(), 77);
        QCOMPARE(UserProfile(m_context.get()).handle(), QStringLiteral("other"));
    }

    void writesOnlyTheFieldsThatChange()
    {
        QVERIFY(profile().requestUpdatePersonalMessage(QStringLiteral("\"y\"\n")));
        QCOMPARE(m_desk.core.nextMessage(), changeRequest("{\"personalMessage\":\"\\\"y\\\"\\n\"}"));
        QVERIFY(profile().requestUpdateStatus(UserStatus::Busy, QStringLiteral("x")));
        QCOMPARE(m_desk.core.nextMessage(), changeRequest(R"({"currentStatus":"x","showBusy":true})"));
        for (const int status : {0, 1, 3}) { // whatever is not busy is available
            QVERIFY(profile().requestUpdateStatus(static_cast<UserStatus::Type>(status), QString()));
            QCOMPARE(m_desk.core.nextMessage(), changeRequest(R"({"currentStatus":"","showBusy":false})"));
        }
        QCOMPARE(profile().statusMessage(), QStringLiteral("far out")); // shown when the service has taken it
    }

    void carriesAPictureUnderItsType()
    {
        const struct
        {
            ImageType::Type type;
            QByteArray mimeType;
            ImageType::Type announcedType;
        } pictures[] = {{ImageType::Jpg, "image/jpeg", ImageType::Jpg},
                        {ImageType::Png, "image/png", ImageType::Png},
                        {ImageType::Gif, "image/gif", ImageType::Gif},
                        {ImageType::Bmp, "image/bmp", ImageType::Bmp},
                        {ImageType::Unsupported, "image/jpeg", ImageType::Jpg}};
        // Longer than can be counted on the way: it would go out cut. Nobody looks at its bytes.
        QVERIFY(!profile().requestUpdateDisplayPicture(ImageType::Png, QByteArray::fromRawData("x", 0x100000001)));
        for (const auto& [type, mimeType, announcedType] : pictures) {
            const QByteArray picture = "picture " + QByteArray::number(type);
            QSignalSpy updates(&profile(), &UserProfile::displayPictureUpdated);
            QVERIFY(profile().requestUpdateDisplayPicture(type, picture));
            const QByteArray change =
                "{\"avatarId\":\"" + hashOf(picture) + "\",\"avatarMimeType\":\"" + mimeType + "\"}";
            QCOMPARE(m_desk.core.nextMessage(), changeRequest(change));
            m_desk.changeProfile(change);
            QTRY_COMPARE(updates.size(), 1);
            QCOMPARE(updates.at(0).at(0).value<ImageType::Type>(), announcedType);
            QCOMPARE(updates.at(0).at(1).toByteArray(), picture);
            QCOMPARE(profile().displayPicture(), picture);
            QCOMPARE(profile().displayPictureMimeType(), announcedType);
        }
    }

    void tellsBindingsOfLostAccess()
    {
        QString bound = profile().displayName(); // what a view shows that is bound to the property
        const auto property = profile().metaObject()->property(profile().metaObject()->indexOfProperty("displayName"));
        QSignalSpy notices(&profile(), property.notifySignal());
        QObject view;
        connect(&profile(), &UserProfile::profileChanged, &view, [&] { bound = profile().displayName(); });
        m_desk.changeState(QStringLiteral("TemporaryError"));
        QTRY_COMPARE(notices.size(), 1);
        QCOMPARE(bound, QString());
        m_desk.changeProfile(R"({"displayName":"Changed meanwhile"})");
        QVERIFY(m_desk.settle());
        QCOMPARE(profile().displayName(), QString());

        m_desk.changeState(QStringLiteral("Success"));
        QTRY_COMPARE(notices.size(), 3);
        QCOMPARE(bound, QStringLiteral("Changed meanwhile"));
        QCOMPARE(profile().handle(), QStringLiteral("my-handle"));
    }

    void maySpinAnEventLoopInASlot()
    {
        QStringList heard;
        QObject owner;
        profile();
        const UserProfile second(m_context.get());
        QSignalSpy messages(&second, &UserProfile::personalMessageUpdated);
        connect(&profile(), &UserProfile::personalMessageUpdated, &owner, [&](const QString& value) {
            heard += value;
            if (value != QLatin1String("first"))
                return;
            QEventLoop dialog;
            connect(&profile(), &UserProfile::displayNameUpdated, &dialog, &QEventLoop::quit);
            m_desk.changePermission(R"({"showAppBox":true,"registrationState":"Pending"})");
            m_desk.changeState(QStringLiteral("Success"));
            m_desk.changeProfile(R"({"personalMessage":"second"})");
            m_desk.changeProfile(R"({"displayName":"B"})");
            dialog.exec();
            heard += profile().displayName() + QLatin1Char('/') + profile().personalMessage();
        });
        m_desk.changeProfile(R"({"personalMessage":"first"})");
        QTRY_COMPARE(heard.size(), 3);
        QCOMPARE(heard, QStringList({QStringLiteral("first"), QStringLiteral("second"), QStringLiteral("B/second")}));
        // The first change reached the other profile after the second one had.
        QCOMPARE(messages.size(), 2);
        QCOMPARE(messages.last().at(0).toString(), QStringLiteral("second"));
        QCOMPARE(second.personalMessage(), QStringLiteral("second"));
        QVERIFY(m_context->isAccessAllowed());
    }

private:
    QByteArray changeRequest(const QByteArray& value) const
    {
        return "{\"requestListChange\":{\"elements\":[{\"name\":\"platformProfile\",\"value\":" + value +
               "}],\"type\":\"global\"}}";
    }
    static QByteArray hashOf(const QByteArray& data)
    {
        return QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
    }
    UserProfile& profile()
    {
        if (!m_profile)
            m_profile = std::make_unique<UserProfile>(m_context.get());
        return *m_profile;
    }

    Desk m_desk;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<UserProfile> m_profile;
};

QTEST_GUILESS_MAIN(TstUserProfile)
#include "tst_userprofile.moc"
