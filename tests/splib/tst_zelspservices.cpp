// SPDX-License-Identifier: Apache-2.0
#include <splib/ZELSPServices.h>

#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/SlogCapture.h>

#include <QTest>

#include <algorithm>
#include <functional>

using Services =
    zelsplib::ZELSPServices<RecordingRegistration, RecordingUserProfile, RecordingContactList, RecordingConnections,
                            RecordingProfileBox, RecordingInvocations, RecordingEcoId, RecordingEcoIdStatus>;

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
    }

    void permission(const QByteArray& members)
    {
        pipe->inject(R"({"listAdd":{"type":"global","elements":[{"name":"permission","value":{)" + members + "}}]}}");
    }
};

const QString success = QStringLiteral("state Success");
const QString contacts = QStringLiteral("contacts ");

} // namespace

class TstZELSPServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isUninitializedWithoutAnObject();
    void tellsSuccessOnceInWhateverOrder();
    void opensNoGateBecauseTheBoxIsHidden();
    void tellsSuccessAgainAtEveryFurtherNotice();
    void fetchesContactsOnceWhileASlotSpins();
    void tellsTheContactsOnceToTheLastWhoCame();
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

void TstZELSPServices::tellsSuccessOnceInWhateverOrder()
{
    const std::function<void(Services&)> notices[] = {
        [](Services& s) { s.contactsIsReady(); }, [](Services& s) { s.registered(); },
        [](Services& s) { s.userProfileIsReady(); }, [](Services& s) { s.userProfileAvatarIsReady(); },
        [](Services& s) { s.profileBoxIsReady(); }};
    constexpr int Contacts = 0;
    QList<int> order{0, 1, 2, 3, 4};
    do {
        Fixture f;
        f.permission(R"("showAppBox":true)");
        f.log.take();
        QList<int> missing = order;
        for (const int notice : order) {
            notices[notice](f.services);
            const bool wasSuccess = missing.isEmpty() || missing == QList<int>{Contacts};
            missing.removeOne(notice);
            QStringList expected;
            if (!wasSuccess && (missing.isEmpty() || missing == QList<int>{Contacts}))
                expected.append(success);
            if (missing.isEmpty())
                expected.append(contacts);
            QCOMPARE(f.log.take(), expected);
        }
        for (int again = 2; again < 5; ++again)
            notices[again](f.services);
        QCOMPARE(f.log.take(), QStringList());
    } while (std::next_permutation(order.begin(), order.end()));
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

// Contacts become ready (r) and listeners come (l) before, while and after the success is told.
void TstZELSPServices::tellsTheContactsOnceToTheLastWhoCame()
{
    const char* const orders[][3] = {{"r", "l", ""}, {"lr", "", ""},  {"", "rl", ""},
                                     {"", "lr", ""}, {"", "lrl", ""}, {"", "l", "r"}};
    for (const auto& [before, meanwhile, after] : orders) {
        Fixture f;
        const auto run = [&f](const char* steps) {
            for (; *steps; ++steps) {
                if (*steps == 'r') {
                    f.services.contactsIsReady();
                    continue;
                }
                f.services.contacts()->setEventsEnabled(true);
                f.services.contacts()->getContactList();
                f.log.take(); // whoever comes has the list without hearing of it
            }
        };
        f.services.registered();
        f.services.userProfileIsReady();
        run(before);
        f.log.on(success, [&, steps = meanwhile] { run(steps); });
        f.services.userProfileAvatarIsReady();
        run(after);
        f.services.registered();
        QVERIFY2(f.log.take().count(contacts) == 1, meanwhile);
    }
}

QTEST_GUILESS_MAIN(TstZELSPServices)
#include "tst_zelspservices.moc"
