// SPDX-License-Identifier: Apache-2.0
#include <splib/ZELSPServices.h>

#include <common/TestMain.h>
#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/SlogCapture.h>

#include <QTest>

#include <algorithm>
#include <utility>

using Services =
    zelsplib::ZELSPServices<RecordingRegistration, RecordingUserProfile, RecordingContactList, RecordingConnections,
                            RecordingProfileBox, RecordingInvocations, RecordingEcoId, RecordingEcoIdStatus>;

namespace {

/// A facade to which things happen, a letter each, and what it then tells, a letter each: S success, C the contact
/// list, N that there is no connection.
class Fixture
{
public:
    Fixture()
    {
        services.globals()->registrationEventHandler().log = &log;
        services.contacts()->eventHandler().log = &log;
        permission("listAdd", {});
    }

    QString after(const QString& steps)
    {
        for (const QChar step : steps)
            happen(step);
        QString told;
        for (const QString& line : log.take())
            told.append(line.startsWith(u"contacts") ? u'C' : line == success ? u'S' : u'N');
        return told;
    }

    void happen(QChar step)
    {
        switch (step.unicode()) {
        case 's': // the service says that the application is registered
            return permission("listChange", R"("registrationState":"Success")");
        case 'n': // and that it is not, any more
            return permission("listChange", R"("registrationState":"NoDataConnection")");
        case 'b': // the box is to be shown
            return permission("listChange", R"("showAppBox":true)");
        case 'B': // both at once
            return permission("listChange", R"("registrationState":"Success","showAppBox":true)");
        case 'h': // the box is to be hidden
            return permission("listChange", R"("showAppBox":false)");
        case 'p':
            return services.userProfileIsReady();
        case 'a':
            return services.userProfileAvatarIsReady();
        case 'x':
            return services.profileBoxIsReady();
        case 'c':
            return services.contactsIsReady();
        case 'l': // somebody begins to listen to contacts, and has the list without hearing of it
            services.contacts()->setEventsEnabled(true);
            services.contacts()->getContactList();
            log.take();
            return;
        }
        Q_UNREACHABLE();
    }

    static inline const QString success = QStringLiteral("state Success");

    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    EventLog log;
    Services services{pipe};

private:
    void permission(const QByteArray& message, const QByteArray& members)
    {
        pipe->inject(R"({")" + message + R"(":{"type":"global","elements":[{"name":"permission","value":{)" + members +
                     "}}]}}");
    }
};

} // namespace

class TstZELSPServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isUninitializedWithoutAnObject()
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
                 lines({"3: can't open pps file at: /pps/services/zelcore/platform, shutting down library",
                        "3: Failed to initialize ZELSPServices, errno:2",
                        "2: Error:ZELSPServices::canRegister(), Cannot register since GlobalsManager is null"}));
    }

    void saysWhichStatesAllowToRegister()
    {
        Fixture f;
        QVERIFY(!f.services.canRegister());
        f.happen(u'n');
        QVERIFY(f.services.canRegister());
        f.happen(u's');
        QVERIFY(!f.services.canRegister());
    }

    // Registration and what it waits for in every order, and with the state lost and back at every two points of it.
    void tellsSuccessWhileItIsTrueAndTheContactsOnce()
    {
        QString order = QStringLiteral("acpsx");
        do {
            for (qsizetype lost = 0; lost <= order.size(); ++lost) {
                for (qsizetype back = lost; back <= order.size(); ++back) {
                    QString steps = order;
                    steps.insert(back, u's').insert(lost, u'n').prepend(u'b');
                    Fixture f;
                    QString done;
                    QChar state;
                    bool isOwed = false;
                    bool isTold = false;
                    bool areContactsTold = false;
                    for (const QChar step : std::as_const(steps)) {
                        QString expected;
                        done.append(step);
                        if ((step == u's' || step == u'n') && std::exchange(state, step) != step) {
                            isOwed = isOwed || step == u's';
                            if (step == u'n')
                                expected = QStringLiteral("N");
                        }
                        const bool isAllIn = done.contains(u'p') && done.contains(u'a') && done.contains(u'x');
                        if (state == u's' && isOwed && isAllIn) {
                            isOwed = false;
                            isTold = true;
                            expected.append(u'S');
                        }
                        if (isTold && done.contains(u'c') && !areContactsTold) {
                            areContactsTold = true;
                            expected.append(u'C');
                        }
                        QVERIFY2(f.after(step) == expected, qPrintable(done));
                        QVERIFY2(f.services.isReady() == (state == u's' && isTold && !isOwed), qPrintable(done));
                    }
                }
            }
        } while (std::next_permutation(order.begin(), order.end()));
    }

    void tellsWhatIsOwed_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("told");
        QTest::newRow("no box to wait for") << "sapc"
                                            << "SC";
        QTest::newRow("hiding the box opens no gate") << "bsaphc"
                                                      << "";
        QTest::newRow("the gate after it does") << "bsahpc"
                                                << "SC";
        QTest::newRow("the picture comes while there is no connection") << "spnacs"
                                                                        << "NSC";
        QTest::newRow("back with a box that has not come") << "spacnBx"
                                                           << "SCNS";
        QTest::newRow("the box is hidden while it is waited for") << "bspahnsc"
                                                                  << "NSC";
        QTest::newRow("contacts come while there is no connection") << "spancs"
                                                                    << "SNCS";
        QTest::newRow("every further notice") << "spacnsns"
                                              << "SCNSNS";
    }
    void tellsWhatIsOwed()
    {
        QFETCH(const QString, steps);
        Fixture f;
        QTEST(f.after(steps), "told");
    }

    // Contacts become ready (c) and listeners come (l) before, while and after the success is told.
    void tellsTheContactsOnceToTheLastWhoCame()
    {
        const char* const orders[][3] = {{"c", "l", ""}, {"lc", "", ""},  {"", "cl", ""}, {"", "lc", ""},
                                         {"", "c", ""},  {"", "lcl", ""}, {"", "l", "c"}};
        for (const auto& [before, meanwhile, after] : orders) {
            Fixture f;
            f.after(QLatin1String("sp") + QLatin1String(before));
            f.log.on(Fixture::success, [&, steps = QString::fromLatin1(meanwhile)] {
                for (const QChar step : steps)
                    f.happen(step);
            });
            const QString told = f.after(u'a' + QLatin1String(after) + QLatin1String("ns"));
            QVERIFY2(told.count(u'C') == 1, qPrintable(told));
        }
    }

    void tellsTheContactsThoughASlotOfTheSuccessThrows()
    {
        Fixture f;
        f.after(QStringLiteral("spc"));
        f.log.on(Fixture::success, [] { throw 1; });
        QVERIFY_THROWS_EXCEPTION(int, f.happen(u'a'));
        QCOMPARE(f.after({}), QStringLiteral("SC"));
    }

    // While a slot of the success still runs, the connection goes, comes and goes again.
    void tellsNoSuccessThatIsOverByThen()
    {
        Fixture f;
        f.after(QStringLiteral("spc"));
        f.log.on(Fixture::success, [&f] {
            f.log.on(QStringLiteral("contacts "), [&f] { f.happen(u'n'); });
            f.happen(u'n');
            f.happen(u's');
        });
        QCOMPARE(f.after(QStringLiteral("a")), QStringLiteral("SNCN"));
        QCOMPARE(f.after(QStringLiteral("s")), QStringLiteral("S"));
    }
};

ZEL_TEST(TstZELSPServices)
#include "tst_zelspservices.moc"
