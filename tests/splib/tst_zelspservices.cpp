// SPDX-License-Identifier: Apache-2.0
#include <splib/ZELSPServices.h>

#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/SlogCapture.h>

#include <QTest>

#include <algorithm>

using Services =
    zelsplib::ZELSPServices<RecordingRegistration, RecordingUserProfile, RecordingContactList, RecordingConnections,
                            RecordingProfileBox, RecordingInvocations, RecordingEcoId, RecordingEcoIdStatus>;

struct ChatsOnly
{
    bool invokeChat(const QString&) { return true; }
};
struct AnswersNothing : ChatsOnly
{
    void sendContactInvitation(const QString&, const QString&, const QString&) {}
};
static_assert(zelsplib::InvocationRequests<RecordingInvocations>);
static_assert(!zelsplib::InvocationRequests<ChatsOnly> && !zelsplib::InvocationRequests<AnswersNothing>);

namespace {

struct Fixture
{
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    EventLog log;
    Services services{pipe};

    Fixture()
    {
        services.globals()->registrationEventHandler().log = &log;
        services.contacts()->eventHandler().log = &log;
        services.messaging()->invocationManager().log = &log;
    }

    void permission(const QByteArray& members)
    {
        pipe->inject(R"({"listAdd":{"type":"global","elements":[{"name":"permission","value":{)" + members + "}}]}}");
    }
};

const QString success = QStringLiteral("state Success");
const QString contacts = QStringLiteral("contacts 0");

} // namespace

class TstZELSPServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isUninitializedWithoutAnObject();
    void decidesWhoMayRegister_data();
    void decidesWhoMayRegister();
    void tellsSuccessOnceInWhateverOrder();
    void waitsForTheBoxOnlyWhenItIsShown();
    void opensNoGateBecauseTheBoxIsHidden();
    void tellsSuccessAgainAtEveryFurtherNotice();
    void fetchesContactsOnceWhileASlotSpins();
    void namesTheTriggerOfSuccess();
    void handsInvitationsAndChatsOn();
};

void TstZELSPServices::isUninitializedWithoutAnObject()
{
    qputenv("PPS_ROOT", "/nonexistent");
    const SlogCapture log;
    Services* services = Services::getServices();
    QCOMPARE(Services::getServices(), services);
    QVERIFY(!services->isInitialized());
    QVERIFY(!services->globals() && !services->ppsManager() && !services->profileBox());
    QVERIFY(!services->canRegister());
    services->userProfileAvatarIsReady();
    services->profileBoxIsReady();
    services->contactsIsReady();
    QCOMPARE(log.lines(),
             (QStringList{QStringLiteral("3: can't open pps file at: /pps/services/zelcore/platform, shutting down "
                                         "library"),
                          QStringLiteral("3: Failed to initialize ZELSPServices, errno:2"),
                          QStringLiteral("2: Error:ZELSPServices::canRegister(), Cannot register since GlobalsManager "
                                         "is null")}));
}

void TstZELSPServices::decidesWhoMayRegister_data()
{
    QTest::addColumn<bool>("allowed");
    for (const char* state :
         {"Unregistered", "NoDataConnection", "UnexpectedError", "InvalidUuid", "TemporaryError", "CancelledByUser"})
        QTest::newRow(state) << true;
    for (const char* state : {"", "Success", "Pending", "Unknown", "BlockedByUser", "BlockedByTov", "Expired",
                              "MaximumUsersReached", "unregistered", "ZelDisabled"})
        QTest::newRow(state) << false;
}

void TstZELSPServices::decidesWhoMayRegister()
{
    QFETCH(bool, allowed);
    Fixture f;
    QVERIFY(!f.services.canRegister());
    f.permission(QByteArray(R"("registrationState":")") + QTest::currentDataTag() + '"');
    const SlogCapture log(5);
    QCOMPARE(f.services.canRegister(), allowed);
    QCOMPARE(log.lines(), QStringList{allowed ? QStringLiteral("5: ZELSPServices::canRegister(), accessCode allows to "
                                                               "register")
                                              : QStringLiteral("5: ZELSPServices::canRegister(), accessCode does not "
                                                               "allow to register")});
}

void TstZELSPServices::tellsSuccessOnceInWhateverOrder()
{
    enum Notice { Registered, Profile, Picture, Box, Contacts };
    QList<int> order{Registered, Profile, Picture, Box, Contacts};
    do {
        Fixture f;
        f.permission(R"("showAppBox":true)");
        f.log.take();
        QList<int> missing = order;
        for (const int notice : order) {
            switch (notice) {
            case Registered:
                f.services.registered();
                break;
            case Profile:
                f.services.userProfileIsReady();
                break;
            case Picture:
                f.services.userProfileAvatarIsReady();
                break;
            case Box:
                f.services.profileBoxIsReady();
                break;
            case Contacts:
                f.services.contactsIsReady();
                break;
            }
            const bool wasSuccess = missing.isEmpty() || missing == QList<int>{Contacts};
            missing.removeOne(notice);
            QStringList expected;
            if (!wasSuccess && (missing.isEmpty() || missing == QList<int>{Contacts}))
                expected.append(success);
            if (missing.isEmpty())
                expected.append(contacts);
            QCOMPARE(f.log.take(), expected);
        }
        f.services.userProfileIsReady();
        f.services.userProfileAvatarIsReady();
        f.services.profileBoxIsReady();
        QCOMPARE(f.log.take(), QStringList());
    } while (std::next_permutation(order.begin(), order.end()));
}

void TstZELSPServices::waitsForTheBoxOnlyWhenItIsShown()
{
    Fixture f;
    f.services.registered();
    f.services.userProfileIsReady();
    QCOMPARE(f.log.take(), QStringList());
    f.services.userProfileAvatarIsReady();
    QCOMPARE(f.log.take(), QStringList{success});
}

void TstZELSPServices::opensNoGateBecauseTheBoxIsHidden()
{
    Fixture f;
    f.permission(R"("showAppBox":true)");
    f.services.registered();
    f.services.userProfileIsReady();
    f.services.userProfileAvatarIsReady();
    f.permission(R"("showAppBox":false)");
    QCOMPARE(f.log.take(), QStringList());
    f.services.profileBoxIsReady();
    QCOMPARE(f.log.take(), QStringList{success});
}

void TstZELSPServices::tellsSuccessAgainAtEveryFurtherNotice()
{
    Fixture f;
    f.services.registered();
    f.services.registered();
    QCOMPARE(f.log.take(), QStringList());
    f.services.userProfileIsReady();
    f.services.contactsIsReady();
    f.services.userProfileAvatarIsReady();
    QCOMPARE(f.log.take(), (QStringList{success, contacts}));
    f.services.registered();
    f.services.registered();
    QCOMPARE(f.log.take(), (QStringList{success, success}));
}

void TstZELSPServices::fetchesContactsOnceWhileASlotSpins()
{
    Fixture f;
    f.services.registered();
    f.services.userProfileIsReady();
    f.log.on(success, [&f] { f.services.contactsIsReady(); });
    f.services.userProfileAvatarIsReady();
    QCOMPARE(f.log.take(), (QStringList{success, contacts}));
}

void TstZELSPServices::namesTheTriggerOfSuccess()
{
    Fixture f;
    f.services.registered();
    f.services.userProfileAvatarIsReady();
    const SlogCapture log;
    f.services.userProfileIsReady();
    QCOMPARE(log.lines(7), QStringList{QStringLiteral("ZELSPServices::prv_pushRegistrationSuccess() triggered by "
                                                      "userProfileIsReady()")});
}

void TstZELSPServices::handsInvitationsAndChatsOn()
{
    Fixture f;
    f.services.registered();
    const auto messaging = f.services.messaging();
    QCOMPARE(messaging->contactList().impl(), f.services.contacts()->contactList().impl());
    QVERIFY(messaging->sendZELInvite(QStringLiteral("e"), QStringLiteral("n"), QStringLiteral("m")));
    messaging->invocationManager().answer = false;
    QVERIFY(!messaging->invokeChat(QStringLiteral("e")));
    QCOMPARE(f.log.take(), (QStringList{QStringLiteral("invite e n m"), QStringLiteral("chat e")}));
}

QTEST_GUILESS_MAIN(TstZELSPServices)
#include "tst_zelspservices.moc"
