// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QMetaProperty>
#include <QtCore/QPointer>

using namespace vx::platform::zel;

/// One process, one bridge: the cases build on each other.
class TstUserProfile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersDefaultsWithoutAContext();
    void staysDeadWhenMadeBeforeRegistration();
    void showsTheRecordFieldByField();
    void showsThePictureThatCameBeforeIt();
    void announcesEachChangeOnceAndInOrder();
    void showsAChangeBeforeItAnnouncesIt();
    void carriesTextOfEveryKind_data();
    void carriesTextOfEveryKind();
    void readsALoneSurrogateAsAReplacement();
    void keepsWhatNeverChanges();
    void writesOnlyTheFieldsThatChange();
    void writesAnyStatusButBusyAsAvailable();
    void refusesPicturesOutsideTheLimits();
    void carriesAPictureThereAndBack_data();
    void carriesAPictureThereAndBack();
    void takesAPictureFromAnotherDevice();
    void showsNoPictureOnceThereIsNone();
    void fallsSilentWhileAccessIsLost();
    void mayBeDestroyedInItsOwnSlot();
    void answersDefaultsAfterItsContextIsGone();

private:
    static void compareWithDefaults(UserProfile& profile);
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

void TstUserProfile::compareWithDefaults(UserProfile& profile)
{
    QCOMPARE(profile.displayName(), QString());
    QCOMPARE(profile.personalMessage(), QString());
    QCOMPARE(profile.status(), UserStatus::Available);
    QCOMPARE(profile.statusMessage(), QString());
    QCOMPARE(profile.ppId(), QString());
    QCOMPARE(profile.handle(), QString());
    QCOMPARE(profile.displayPictureMimeType(), ImageType::Unsupported);
    QCOMPARE(profile.displayPicture(), QByteArray());
    QCOMPARE(profile.applicationVersion(), QString());
    QCOMPARE(profile.zelVersion(), 0);
    QCOMPARE(profile.sdkVersion(), 200);
    QVERIFY(!profile.requestUpdatePersonalMessage(QStringLiteral("x")));
    QVERIFY(!profile.requestUpdateStatus(UserStatus::Busy, QStringLiteral("x")));
    QVERIFY(!profile.requestUpdateDisplayPicture(ImageType::Png, "x"));
}

void TstUserProfile::answersDefaultsWithoutAContext()
{
    UserProfile profile(nullptr);
    compareWithDefaults(profile);
}

void TstUserProfile::staysDeadWhenMadeBeforeRegistration()
{
    m_desk.profile().insert(QStringLiteral("avatarId"), QStringLiteral("first"));
    m_desk.profile().insert(QStringLiteral("avatarMimeType"), QStringLiteral("image/png"));
    m_desk.pictures.insert(QStringLiteral("first"), "first picture");
    m_context = std::make_unique<Context>(QUuid::createUuid());
    UserProfile early(m_context.get());
    QVERIFY(m_desk.becomeAllowed());

    QSignalSpy names(&early, &UserProfile::displayNameUpdated);
    m_desk.changeProfile(R"({"displayName":"Ada L."})");
    QVERIFY(m_desk.settle());
    compareWithDefaults(early);
    QCOMPARE(names.size(), 0);
    QVERIFY(m_desk.nothingWritten());
}

void TstUserProfile::showsTheRecordFieldByField()
{
    QCOMPARE(profile().displayName(), QStringLiteral("Ada L."));
    QCOMPARE(profile().personalMessage(), QStringLiteral("Hello"));
    QCOMPARE(profile().status(), UserStatus::Available);
    QCOMPARE(profile().statusMessage(), QStringLiteral("here"));
    QCOMPARE(profile().ppId(), QStringLiteral("my-ppid"));
    QCOMPARE(profile().handle(), QStringLiteral("my-handle"));
    QCOMPARE(profile().displayPictureMimeType(), ImageType::Png);
    QCOMPARE(profile().applicationVersion(), QStringLiteral("1.2"));
    QCOMPARE(profile().zelVersion(), 77);
    QCOMPARE(profile().sdkVersion(), 200);

    const QMetaObject& meta = UserProfile::staticMetaObject;
    QCOMPARE(meta.propertyCount() - meta.propertyOffset(), 11);
    for (int index = meta.propertyOffset(); index < meta.propertyCount(); ++index) {
        const QMetaProperty property = meta.property(index);
        QVERIFY2(property.hasNotifySignal() || property.isConstant(), property.name());
        QVERIFY2(property.read(&profile()).isValid(), property.name());
    }
}

void TstUserProfile::showsThePictureThatCameBeforeIt()
{
    QCOMPARE(profile().displayPicture(), QByteArray("first picture"));
}

void TstUserProfile::announcesEachChangeOnceAndInOrder()
{
    QStringList order;
    QObject owner;
    connect(&profile(), &UserProfile::displayNameUpdated, &owner,
            [&](const QString& value) { order += QStringLiteral("name ") + value; });
    connect(&profile(), &UserProfile::personalMessageUpdated, &owner,
            [&](const QString& value) { order += QStringLiteral("message ") + value; });
    connect(&profile(), &UserProfile::statusUpdated, &owner, [&](UserStatus::Type status, const QString& message) {
        order += QStringLiteral("status %1 %2").arg(status).arg(message);
    });
    m_desk.changeProfile(R"({"showBusy":true,"currentStatus":"out","personalMessage":"Bye","displayName":"A"})");
    m_desk.changeProfile(R"({"showBusy":true,"currentStatus":"out","personalMessage":"Bye","displayName":"A"})");
    m_desk.changeProfile(R"({"currentStatus":"far out"})");
    QVERIFY(m_desk.settle());
    const QStringList expected{QStringLiteral("name A"), QStringLiteral("message Bye"), QStringLiteral("status 2 out"),
                               QStringLiteral("status 2 far out")};
    QCOMPARE(order, expected);
}

void TstUserProfile::showsAChangeBeforeItAnnouncesIt()
{
    UserProfile second(m_context.get());
    int announced = 0;
    QObject owner;
    for (UserProfile* shown : {&profile(), &second}) {
        connect(shown, &UserProfile::displayNameUpdated, &owner, [&, shown](const QString& value) {
            ++announced;
            QCOMPARE(shown->displayName(), value);
        });
        connect(shown, &UserProfile::personalMessageUpdated, &owner, [&, shown](const QString& value) {
            ++announced;
            QCOMPARE(shown->personalMessage(), value);
        });
        connect(shown, &UserProfile::statusUpdated, &owner,
                [&, shown](UserStatus::Type status, const QString& message) {
                    ++announced;
                    QCOMPARE(shown->status(), status);
                    QCOMPARE(shown->statusMessage(), message);
                });
    }
    m_desk.changeProfile(R"({"displayName":"B","personalMessage":"Hm","showBusy":false,"currentStatus":"in"})");
    QTRY_COMPARE(announced, 6);
}

void TstUserProfile::carriesTextOfEveryKind_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("quotes and breaks") << QStringLiteral("\"a\\b\"\r\n\t/");
    QTest::newRow("emoji") << QString::fromUtf8("\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x9a\x80");
    QTest::newRow("right to left") << QString::fromUtf8("\xd8\xb3\xd9\x84\xd8\xa7\xd9\x85 \xd7\xa9\xd7\x9c");
    QTest::newRow("empty") << QString();
}

void TstUserProfile::carriesTextOfEveryKind()
{
    QFETCH(QString, text);
    QSignalSpy messages(&profile(), &UserProfile::personalMessageUpdated);
    QVERIFY(profile().requestUpdatePersonalMessage(text));
    const QJsonObject request = ScriptedCore::json(m_desk.core.nextMessage());
    const QJsonObject element =
        request.value(QLatin1String("requestListChange"))[QLatin1String("elements")][0].toObject();
    const QJsonObject value = element.value(QLatin1String("value")).toObject();
    QCOMPARE(value.keys(), QStringList(QStringLiteral("personalMessage")));
    QCOMPARE(value.value(QLatin1String("personalMessage")).toString(), text);

    m_desk.changeProfile(QJsonDocument(value).toJson());
    QTRY_COMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(0).toString(), text);
}

void TstUserProfile::readsALoneSurrogateAsAReplacement()
{
    QSignalSpy messages(&profile(), &UserProfile::personalMessageUpdated);
    m_desk.core.sendRecord(R"(@platform
dat:json:{"listChange":{"type":"global","elements":[{"name":"platformProfile","value":{"personalMessage":"a\ud83db"}}]}}
)");
    QTRY_COMPARE(messages.size(), 1);
    QCOMPARE(messages.at(0).at(0).toString(), QString::fromUtf8("a\xef\xbf\xbd") + QLatin1Char('b'));
}

void TstUserProfile::keepsWhatNeverChanges()
{
    m_desk.changeProfile(R"({"ppid":"other","handle":"other","appVersion":"9","clientVersion":9})");
    QVERIFY(m_desk.settle());
    QCOMPARE(profile().ppId(), QStringLiteral("my-ppid"));
    QCOMPARE(profile().handle(), QStringLiteral("my-handle"));
    QCOMPARE(profile().applicationVersion(), QStringLiteral("1.2"));
    QCOMPARE(profile().zelVersion(), 77);
    QCOMPARE(UserProfile(m_context.get()).handle(), QStringLiteral("other"));
}

void TstUserProfile::writesOnlyTheFieldsThatChange()
{
    QVERIFY(profile().requestUpdateStatus(UserStatus::Busy, QStringLiteral("x")));
    QCOMPARE(m_desk.core.nextMessage(), changeRequest("{\"currentStatus\":\"x\",\"showBusy\":true}"));
    QVERIFY(profile().requestUpdatePersonalMessage(QStringLiteral("y")));
    QCOMPARE(m_desk.core.nextMessage(), changeRequest("{\"personalMessage\":\"y\"}"));
    QCOMPARE(profile().statusMessage(), QStringLiteral("in")); // shown when the service has taken it, not before
}

void TstUserProfile::writesAnyStatusButBusyAsAvailable()
{
    for (int status : {0, 1, 3}) {
        QVERIFY(profile().requestUpdateStatus(static_cast<UserStatus::Type>(status), QString()));
        QCOMPARE(m_desk.core.nextMessage(), changeRequest("{\"currentStatus\":\"\",\"showBusy\":false}"));
    }
}

void TstUserProfile::refusesPicturesOutsideTheLimits()
{
    QVERIFY(!profile().requestUpdateDisplayPicture(ImageType::Png, QByteArray()));
    QVERIFY(!profile().requestUpdateDisplayPicture(ImageType::Png, QByteArray(32769, 'x')));
    QVERIFY(m_desk.nothingWritten());
}

void TstUserProfile::carriesAPictureThereAndBack_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<ImageType::Type>("type");
    QTest::addColumn<QByteArray>("mimeType");
    QTest::addColumn<ImageType::Type>("announcedType");
    QTest::newRow("one byte") << 1 << ImageType::Jpg << QByteArray("image/jpeg") << ImageType::Jpg;
    QTest::newRow("one chunk") << 15360 << ImageType::Png << QByteArray("image/png") << ImageType::Png;
    QTest::newRow("two chunks") << 15361 << ImageType::Gif << QByteArray("image/gif") << ImageType::Gif;
    QTest::newRow("largest") << 32768 << ImageType::Bmp << QByteArray("image/bmp") << ImageType::Bmp;
    QTest::newRow("unsupported") << 2 << ImageType::Unsupported << QByteArray("image/jpeg") << ImageType::Jpg;
}

void TstUserProfile::carriesAPictureThereAndBack()
{
    QFETCH(int, size);
    QFETCH(ImageType::Type, type);
    QFETCH(QByteArray, mimeType);
    QFETCH(ImageType::Type, announcedType);
    const QByteArray picture(size, static_cast<char>('a' + size % 26));
    QSignalSpy pictures(&profile(), &UserProfile::displayPictureUpdated);

    QVERIFY(profile().requestUpdateDisplayPicture(type, picture));
    const QByteArray change = "{\"avatarId\":\"" + hashOf(picture) + "\",\"avatarMimeType\":\"" + mimeType + "\"}";
    QCOMPARE(m_desk.core.nextMessage(), changeRequest(change));
    QVERIFY(!profile().requestUpdateDisplayPicture(ImageType::Png, "another")); // one at a time

    m_desk.core.send(QStringLiteral("requestNewAvatarImage"), {{QStringLiteral("streamId"), QStringLiteral("s")}});
    QByteArray received;
    bool last = false;
    while (!last) {
        const auto chunk = ScriptedCore::json(m_desk.core.nextMessage()).value(QLatin1String("stream"));
        QCOMPARE(chunk[QLatin1String("id")].toString(), QStringLiteral("s"));
        QVERIFY(chunk[QLatin1String("value")].toString().size() <= 20480);
        received += QByteArray::fromBase64(chunk[QLatin1String("value")].toString().toLatin1());
        last = chunk[QLatin1String("last")].toBool();
    }
    QCOMPARE(received, picture);

    m_desk.changeProfile(change);
    QTRY_COMPARE(pictures.size(), 1);
    QCOMPARE(pictures.at(0).at(0).value<ImageType::Type>(), announcedType);
    QCOMPARE(pictures.at(0).at(1).toByteArray(), picture);
    QCOMPARE(profile().displayPicture(), picture);
    QCOMPARE(profile().displayPictureMimeType(), announcedType);
    QVERIFY(m_desk.settle());
    QCOMPARE(pictures.size(), 1);
}

void TstUserProfile::takesAPictureFromAnotherDevice()
{
    UserProfile second(m_context.get());
    QSignalSpy pictures(&profile(), &UserProfile::displayPictureUpdated);
    m_desk.pictures.insert(QStringLiteral("elsewhere"), "from elsewhere");
    m_desk.changeProfile(R"({"avatarId":"elsewhere","avatarMimeType":"image/webp"})");
    QTRY_COMPARE(pictures.size(), 1);
    QCOMPARE(pictures.at(0).at(0).value<ImageType::Type>(), ImageType::Unsupported);
    QCOMPARE(pictures.at(0).at(1).toByteArray(), QByteArray("from elsewhere"));
    QCOMPARE(second.displayPicture(), QByteArray("from elsewhere"));
    QCOMPARE(second.displayPictureMimeType(), ImageType::Unsupported);
}

void TstUserProfile::showsNoPictureOnceThereIsNone()
{
    QSignalSpy pictures(&profile(), &UserProfile::displayPictureUpdated);
    m_desk.changeProfile(R"({"avatarId":"","avatarMimeType":""})");
    QTRY_COMPARE(pictures.size(), 1);
    QCOMPARE(pictures.at(0).at(1).toByteArray(), QByteArray());
    QCOMPARE(profile().displayPicture(), QByteArray());
}

void TstUserProfile::fallsSilentWhileAccessIsLost()
{
    QSignalSpy access(&profile(), SIGNAL(accessChanged()));
    m_desk.changeState(QStringLiteral("TemporaryError"));
    QTRY_COMPARE(access.size(), 1);
    compareWithDefaults(profile());
    m_desk.changeProfile(R"({"displayName":"Changed meanwhile"})");
    QVERIFY(m_desk.settle());
    QCOMPARE(profile().displayName(), QString());

    m_desk.changeState(QStringLiteral("Success"));
    QTRY_COMPARE(access.size(), 2);
    QCOMPARE(profile().displayName(), QStringLiteral("Changed meanwhile"));
    QCOMPARE(profile().handle(), QStringLiteral("my-handle"));
}

void TstUserProfile::mayBeDestroyedInItsOwnSlot()
{
    QPointer<UserProfile> doomed = new UserProfile(m_context.get());
    connect(doomed, &UserProfile::displayNameUpdated, doomed, [&] { delete doomed; });
    QSignalSpy names(&profile(), &UserProfile::displayNameUpdated);
    m_desk.changeProfile(R"({"displayName":"C"})");
    QTRY_COMPARE(names.size(), 1);
    QVERIFY(!doomed);
}

void TstUserProfile::answersDefaultsAfterItsContextIsGone()
{
    auto context = std::make_unique<Context>(QUuid::createUuid());
    UserProfile shown(context.get());
    QCOMPARE(shown.displayName(), QStringLiteral("C"));
    context.reset();
    compareWithDefaults(shown);
}

QTEST_GUILESS_MAIN(TstUserProfile)
#include "tst_userprofile.moc"
