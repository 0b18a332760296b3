// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/GlobalsManager.h>

#include <common/TestMain.h>
#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/SlogCapture.h>

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QScopeGuard>
#include <QTest>

using zelsplib::Avatar;
using zelsplib::PlatformContact;
using zelsplib::PlatformPermissions;
using Manager = zelsplib::GlobalsManager<RecordingRegistration, RecordingUserProfile>;

class TstGlobalsManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsThePermissionAndKeepsDefaults();
    void tellsTheFacadeOfSuccess();
    void answersARegisteredApplicationAtOnce();
    void reportsAProfileWithoutPicture();
    void waitsForAUserId();
    void takesAProfileThatCameUnasked();
    void followsThePicture();
    void refusesPictures();
    void confirmsAPictureByTheChangedProfile();
    void confirmsTheSamePictureByTheResponse();
    void dropsARefusedPicture();
    void asksAgainWhileAPictureHasNoAnswer();
    void asksAgainForTheOwnPicture();
    void forgetsHalfAPicture();
    void takesAnAnnouncedStream();
    void sendsAPictureWhoseRecordChangedFirst();
};

namespace {

QByteArray sha1(const QByteArray& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
}

/// A manager that has asked for its first record, and whatever it has been told.
struct Fixture
{
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    EventLog log;
    RecordingGates gates;
    std::unique_ptr<Manager> manager;
    QByteArray cookie; ///< of the last request for elements

    Fixture()
    {
        gates.log = &log;
        manager = std::make_unique<Manager>(QSharedPointer<zel::ListApiMultiplexer>::create(pipe),
                                            QSharedPointer<zel::JsonStream>::create(pipe), &gates);
        manager->registrationEventHandler().log = &log;
        manager->userProfileEventHandler().log = &log;
    }

    void init()
    {
        QVERIFY(asked("permission"));
        answer(R"({"name":"permission","value":{"registrationState":"Success"}})");
        manager->init();
        QVERIFY(asked("platformProfile"));
        log.take();
    }

    /// A manager whose own profile has come, with the picture "old" under the id "p0".
    void initWithProfile()
    {
        init();
        answer(R"({"name":"platformProfile","value":{"userId":"me","displayName":"A","personalMessage":"B",)"
               R"("currentStatus":"C","avatarId":"p0","avatarMimeType":"image/png"}})");
        QVERIFY(pipe->expectSentText(R"({"requestUserAvatar":{"userId":"me","streamId":"p0"}})"));
        stream("p0", "old");
        QCOMPARE(log.take(), lines({"gate profile", "picture p0 image/png old", "gate picture"}));
        QCOMPARE(manager->getMyAvatar(), QByteArray("old"));
    }

    /// Waits until the elements that were asked for name this one among them, and takes the request.
    bool asked(const char* name)
    {
        const auto names = [this, name] {
            const QByteArray last = pipe->sent().isEmpty() ? QByteArray() : pipe->sent().last();
            cookie = QJsonDocument::fromJson(last)[u"requestListElements"][u"cookie"].toString().toUtf8();
            return last.contains(QByteArray("{\"name\":\"") + name + "\"}");
        };
        const bool found = QTest::qWaitFor(names);
        pipe->clearSent();
        return found;
    }

    void answer(const QByteArray& element)
    {
        pipe->inject(R"({"listElements":{"type":"global","cookie":")" + cookie + R"("}})");
        pipe->inject(R"({"listChunk":{"type":"global","elements":[)" + element + R"(],"last":true}})");
    }

    void change(const QByteArray& element)
    {
        pipe->inject(R"({"listChange":{"type":"global","elements":[)" + element + "]}}");
    }
    void permission(const QByteArray& members) { change(R"({"name":"permission","value":{)" + members + "}}"); }
    void state(const QByteArray& state) { permission(R"("registrationState":")" + state + '"'); }
    void profile(const QByteArray& members) { change(R"({"name":"platformProfile","value":{)" + members + "}}"); }

    void stream(const QByteArray& id, const QByteArray& data)
    {
        pipe->inject(R"({"stream":{"id":")" + id + R"(","value":")" + data.toBase64() + R"(","last":true}})");
    }

    bool setPicture(const QByteArray& data)
    {
        return manager->setProfileAvatar(Avatar::Gif, data.constData(), static_cast<unsigned>(data.size()));
    }
};

} // namespace

void TstGlobalsManager::readsThePermissionAndKeepsDefaults()
{
    Fixture f;
    QVERIFY(f.asked("permission"));
    QCOMPARE(f.manager->getPermissions(), PlatformPermissions());
    f.answer(R"({"name":"permission","value":{"showAppBox":1,"zelInvites":true,"registrationState":7}})");
    QCOMPARE(f.manager->getPermissions(), (PlatformPermissions{false, true, {}, false}));
    QCOMPARE(f.log.take(), QStringList());
    f.permission(R"("showAppBox":true,"registrationState":"Expired","zelSetup":true)");
    QCOMPARE(f.manager->getPermissions(), (PlatformPermissions{true, true, QStringLiteral("Expired"), true}));
    QCOMPARE(f.manager->getAccessCode(), QStringLiteral("Expired"));
    f.change(R"({"name":"somethingElse","value":{"registrationState":"Success"}},{"name":"permission","value":[]})");
    QCOMPARE(f.log.take(), lines({"state Expired"}));
}

void TstGlobalsManager::tellsTheFacadeOfSuccess()
{
    Fixture f;
    QVERIFY(f.asked("permission"));
    f.answer(R"({"name":"permission","value":{"registrationState":"Success"}})");
    f.permission(R"("showAppBox":true)");
    f.state("TemporaryError");
    f.state("Success");
    QCOMPARE(f.log.take(), lines({"gate registered", "state TemporaryError", "gate registered"}));
    f.manager->pushRegistrationEvent(QStringLiteral("Success"));
    QCOMPARE(f.log.take(), lines({"state Success"}));
}

void TstGlobalsManager::answersARegisteredApplicationAtOnce()
{
    Fixture f;
    QVERIFY(f.asked("permission"));
    f.answer(R"({"name":"permission","value":{"registrationState":"Success"}})");
    f.log.take();
    f.manager->sendRegistration(QStringLiteral("u-1"), false);
    QVERIFY(f.pipe->expectNothingSent());
    QCOMPARE(f.log.take(), lines({"state Success"}));
}

void TstGlobalsManager::reportsAProfileWithoutPicture()
{
    Fixture f;
    f.init();
    f.answer(R"({"name":"platformProfile","value":{"userId":""}})");
    QCOMPARE(f.log.take(), lines({"gate profile", "picture   ", "gate picture"}));
    f.profile(R"("displayName":"A")");
    QCOMPARE(f.log.take(), lines({"name A"}));
    QVERIFY(f.pipe->expectNothingSent());
}

void TstGlobalsManager::waitsForAUserId()
{
    Fixture f;
    f.init();
    f.answer(R"({"name":"platformProfile","value":{"displayName":"A"}})");
    QCOMPARE(f.log.take(), QStringList());
    f.profile(R"("userId":"me")");
    f.profile(R"("userId":"me","handle":"h")");
    QCOMPARE(f.log.take(), lines({"gate profile", "picture   ", "gate picture"}));
}

void TstGlobalsManager::takesAProfileThatCameUnasked()
{
    Fixture f;
    f.pipe->inject(R"({"listAdd":{"type":"global","elements":[{"name":"platformProfile","value":{"userId":"me"}}]}})");
    QCOMPARE(f.log.take(), QStringList());
    f.manager->init();
    QCOMPARE(f.log.take(), QStringList());
    QTRY_COMPARE(f.log.lines(), lines({"gate profile", "picture   ", "gate picture"}));
}

void TstGlobalsManager::followsThePicture()
{
    Fixture f;
    f.initWithProfile();
    f.profile(R"("avatarId":"p1","avatarMimeType":"image/bmp")");
    QVERIFY(f.pipe->expectSentText(R"({"requestUserAvatar":{"userId":"me","streamId":"p1"}})"));
    f.stream("p0", "old again");
    f.stream("unknown", "x");
    f.stream("p1", "new");
    f.stream("p1", "twice");
    QCOMPARE(f.log.take(), lines({"picture p1 image/bmp new", "gate picture"}));
    QCOMPARE(f.manager->getMyAvatar(), QByteArray("new"));

    // A picture that was overtaken by another, or by none, is not told any more.
    f.profile(R"("avatarId":"p2")");
    f.profile(R"("avatarId":"p3")");
    f.stream("p2", "late");
    f.profile(R"("avatarId":"")");
    f.stream("p3", "late");
    QCOMPARE(f.log.take(), lines({"picture  image/bmp ", "gate picture"}));
    QVERIFY(f.manager->getMyAvatar().isEmpty());
}

void TstGlobalsManager::refusesPictures()
{
    Fixture f;
    const SlogCapture log(5);
    const QByteArray huge(32769, 'x');
    QVERIFY(!f.manager->setProfileAvatar(Avatar::Png, nullptr, 0));
    QVERIFY(!f.manager->setProfileAvatar(Avatar::Png, nullptr, 40000));
    QVERIFY(!f.setPicture(huge));
    QVERIFY(f.pipe->expectNothingSent());
    QVERIFY(f.setPicture(huge.left(32768)));
    f.pipe->clearSent();
    QVERIFY(!f.setPicture("x"));
    QVERIFY(f.pipe->expectNothingSent());
    QCOMPARE(log.lines(2),
             lines({"Error:Avatar size == 0", "Error:Avatar data is null", "Error:Avatar size 32769 exceeds 32768",
                    "Error:m_pendingAvatarSetRequest != 0; this request will be ignored since a request "
                    "is already pending"}));
}

void TstGlobalsManager::confirmsAPictureByTheChangedProfile()
{
    Fixture f;
    f.initWithProfile();
    QVERIFY(f.setPicture("mine"));
    const QByteArray id = sha1("mine");
    QVERIFY(
        f.pipe->expectSentText(R"({"requestListChange":{"elements":[{"name":"platformProfile","value":{"avatarId":")" +
                               id + R"(","avatarMimeType":"image/gif"}}],"type":"global"}})"));
    f.pipe->inject(R"({"profileChangeResponse":{"status":"Success"}})");
    QCOMPARE(f.log.take(), QStringList());
    f.profile(R"("avatarId":")" + id + R"(","avatarMimeType":"image/gif")");
    QCOMPARE(f.log.take(),
             QStringList({QString::fromLatin1("picture " + id + " image/gif mine"), QStringLiteral("gate picture")}));
    QVERIFY(f.setPicture("next"));
    f.pipe->clearSent();

    // Another device was quicker: what is pending is told as the picture.
    f.profile(R"("avatarId":"theirs","avatarMimeType":"image/bmp")");
    QCOMPARE(f.log.take(), lines({"picture theirs image/bmp next", "gate picture"}));
    QVERIFY(f.pipe->expectNothingSent());
}

void TstGlobalsManager::confirmsTheSamePictureByTheResponse()
{
    Fixture f;
    f.initWithProfile();
    const QByteArray id = sha1("mine");
    f.setPicture("mine");
    f.profile(R"("avatarId":")" + id + R"(","avatarMimeType":"image/gif")");
    f.log.take();
    for (const char* body : {R"({"status":"Success"})", "{}", R"({"status":5})", "[]"}) {
        QVERIFY(f.setPicture("mine"));
        f.pipe->inject(QByteArray(R"({"profileChangeResponse":)") + body + '}');
        QCOMPARE(f.log.take(), QStringList({QString::fromLatin1("picture " + id + " image/gif mine"),
                                            QStringLiteral("gate picture")}));
    }
    f.pipe->inject(R"({"profileChangeResponse":{"status":"Success"}})");
    QCOMPARE(f.log.take(), QStringList());
}

void TstGlobalsManager::dropsARefusedPicture()
{
    Fixture f;
    f.initWithProfile();
    const QByteArray id = sha1("mine");
    QVERIFY(f.setPicture("mine"));
    f.pipe->inject(R"({"profileChangeResponse":{"status":"Failure"}})");
    QCOMPARE(f.log.take(), QStringList());
    QCOMPARE(f.manager->getMyAvatar(), QByteArray("old"));

    // What was refused was another change: the picture goes on its way.
    f.pipe->clearSent();
    f.pipe->inject(R"({"requestNewAvatarImage":{"streamId":")" + id + R"("}})");
    QVERIFY(f.pipe->expectSentText(R"({"stream":{"id":")" + id + R"(","value":"bWluZQ==","last":true}})"));
    f.profile(R"("avatarId":")" + id + R"(","avatarMimeType":"image/gif")");
    QVERIFY(f.pipe->expectSentText(R"({"requestUserAvatar":{"userId":"me","streamId":")" + id + R"("}})"));
    f.stream(id, "mine");
    QCOMPARE(f.log.take(),
             QStringList({QString::fromLatin1("picture " + id + " image/gif mine"), QStringLiteral("gate picture")}));
    QVERIFY(f.setPicture("next"));
}

void TstGlobalsManager::asksAgainWhileAPictureHasNoAnswer()
{
    const auto clock = FakeClock::install();
    const auto uninstall = qScopeGuard(&FakeClock::uninstall);
    Fixture f;
    f.initWithProfile();
    QVERIFY(f.setPicture("mine"));
    const QByteArray request = f.pipe->sent().last();
    f.pipe->clearSent();
    clock->advance(30 * 1000);
    QVERIFY(f.pipe->expectSentText(request));

    f.profile(R"("avatarId":")" + sha1("mine") + R"(","avatarMimeType":"image/gif")");
    QVERIFY(f.setPicture("next"));
    f.pipe->inject(R"({"profileChangeResponse":{"status":"Failure"}})");
    f.pipe->clearSent();
    clock->advance(10 * 60 * 1000);
    QVERIFY(f.pipe->expectNothingSent());
}

void TstGlobalsManager::asksAgainForTheOwnPicture()
{
    const auto clock = FakeClock::install();
    const auto uninstall = qScopeGuard(&FakeClock::uninstall);
    Fixture f;
    f.init();
    f.answer(R"({"name":"platformProfile","value":{"userId":"me","avatarId":"p0"}})");
    const QByteArray request = R"({"requestUserAvatar":{"userId":"me","streamId":"p0"}})";
    QVERIFY(f.pipe->expectSentText(request));
    f.manager->requestProfileAvatar(); // goes out, and waits with the one before
    QVERIFY(f.pipe->expectSentText(request));
    clock->advance(30 * 1000 - 1);
    QVERIFY(f.pipe->expectNothingSent());
    clock->advance(60 * 1000 + 1);
    QVERIFY(f.pipe->expectSentText(request));
    QVERIFY(f.pipe->expectSentText(request));
    f.stream("p0", "old");
    QCOMPARE(f.log.take(), lines({"gate profile", "picture p0  old", "gate picture"}));
    f.profile(R"("avatarId":"p1")");
    f.profile(R"("avatarId":"")");
    f.pipe->clearSent();
    clock->advance(10 * 60 * 1000);
    QVERIFY(f.pipe->expectNothingSent());
}

void TstGlobalsManager::forgetsHalfAPicture()
{
    const auto clock = FakeClock::install();
    const auto uninstall = qScopeGuard(&FakeClock::uninstall);
    Fixture f;
    f.initWithProfile();
    const auto half = [&f](const QByteArray& id) {
        f.pipe->inject(R"({"stream":{"id":")" + id + R"(","value":"aGFsZg=="}})");
    };
    half("p1");
    f.profile(R"("avatarId":"p1")");
    half("p1");
    clock->advance(30 * 1000);
    f.stream("p1", "whole");
    half("s7");
    f.pipe->inject(R"({"requestNewAvatarImage":{"streamId":"s7"}})");
    f.stream("s7", "theirs");
    QCOMPARE(f.log.take(),
             lines({"picture p1 image/png whole", "gate picture", "picture p1 image/png theirs", "gate picture"}));
}

void TstGlobalsManager::takesAnAnnouncedStream()
{
    Fixture f;
    f.initWithProfile();
    f.profile(R"("avatarId":"p1")");
    f.pipe->clearSent();
    f.pipe->inject(R"({"requestNewAvatarImage":{"streamId":"s7"}})");
    f.pipe->inject(R"({"requestNewAvatarImage":{}})");
    QVERIFY(f.pipe->expectNothingSent());
    f.stream("", "nothing");
    f.stream("s7", "theirs");
    f.stream("s7", "twice");
    QCOMPARE(f.log.take(), lines({"picture p1 image/png theirs", "gate picture"}));
    // What was asked for before is still awaited.
    f.stream("p1", "asked");
    QCOMPARE(f.log.take(), lines({"picture p1 image/png asked", "gate picture"}));
}

void TstGlobalsManager::sendsAPictureWhoseRecordChangedFirst()
{
    Fixture f;
    f.initWithProfile();
    const QByteArray id = sha1("mine");
    f.setPicture("mine");
    f.profile(R"("avatarId":")" + id + '"');
    f.log.take();
    f.pipe->clearSent();
    f.pipe->inject(R"({"requestNewAvatarImage":{"streamId":")" + id + R"("}})");
    QVERIFY(f.pipe->expectSentText(R"({"stream":{"id":")" + id + R"(","value":"bWluZQ==","last":true}})"));
    QCOMPARE(f.log.take(), QStringList());
}

ZEL_TEST(TstGlobalsManager)
#include "tst_globalsmanager.moc"
