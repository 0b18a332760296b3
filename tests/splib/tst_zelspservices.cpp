// SPDX-License-Identifier: Apache-2.0
#include <splib/ZELSPServices.h>

#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

using Services =
    zelsplib::ZELSPServices<RecordingRegistration, RecordingUserProfile, RecordingContactList, RecordingOthers,
                            RecordingProfileBox, RecordingOthers, RecordingOthers, RecordingOthers>;

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
            told.append(line == u"contacts" ? u'C' : line == success ? u'S' : u'N');
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
            services.contacts()->eventHandler().log = nullptr;
            services.contacts()->getContactList();
            services.contacts()->eventHandler().log = &log;
            return;
        case '!':
            throw 1;
        }
        Q_UNREACHABLE();
    }

    static inline const QString success = u"state Success"_s;

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
        QCOMPARE(
            log.lines(),
            QStringList({u"3: can't open pps file at: /pps/services/zelcore/platform, shutting down library"_s,
                         u"3: Failed to initialize ZELSPServices, errno:2"_s,
                         u"2: Error:ZELSPServices::canRegister(), Cannot register since GlobalsManager is null"_s}));
    }

    // Registration and what it waits for in every order, with one thing changed and changed back at any two points.
    void tellsSuccessWhileItIsTrueAndTheContactsOnce_data()
    {
        QTest::addColumn<QString>("changes"); // at first, and in between
        QTest::addColumn<QString>("order");
        QTest::newRow("the connection goes") << u"bns"_s << u"acpsx"_s;
        QTest::newRow("the connection goes, and comes with a box") << u"hnB"_s << u"apsx"_s;
        QTest::newRow("the box is hidden for a time") << u"bhb"_s << u"apsx"_s;
        QTest::newRow("the box is shown for a time") << u"hbh"_s << u"apsx"_s;
    }
    void tellsSuccessWhileItIsTrueAndTheContactsOnce()
    {
        QFETCH(const QString, changes);
        QFETCH(QString, order);
        do {
            for (qsizetype first = 0; first <= order.size(); ++first) {
                for (qsizetype second = first; second <= order.size(); ++second) {
                    QString steps = order;
                    steps.insert(second, changes[2]).insert(first, changes[1]).prepend(changes[0]);
                    Fixture f;
                    QString done;
                    bool isTrue = false;
                    bool hasBox = false;
                    bool isOwed = false;
                    bool isTold = false;
                    bool areContactsTold = false;
                    for (const QChar step : std::as_const(steps)) {
                        QString expected;
                        done.append(step);
                        if (step.toLower() == u'b' || step == u'h')
                            hasBox = step != u'h';
                        if (step == u's' || step == u'B')
                            isOwed = !std::exchange(isTrue, true) || isOwed;
                        if (step == u'n') {
                            expected.append(u'N');
                            isTrue = false;
                        }
                        const bool isAllIn =
                            done.contains(u'p') && done.contains(u'a') && (!hasBox || done.contains(u'x'));
                        if (isTrue && isOwed && isAllIn && step != u'b' && step != u'h') {
                            isOwed = false;
                            isTold = true;
                            expected.append(u'S');
                        }
                        if (isTold && done.contains(u'c') && !std::exchange(areContactsTold, true))
                            expected.append(u'C');
                        QVERIFY2(f.after(step) == expected, qPrintable(done));
                        QVERIFY2(f.services.isReady() == (isTrue && isTold && !isOwed), qPrintable(done));
                    }
                }
            }
        } while (std::next_permutation(order.begin(), order.end()));
    }

    // The contacts become ready and listeners come, the connection goes and comes and somebody throws, before the
    // success, in a slot of it, in a slot of the list that follows, and after.
    void tellsWhatIsTrueByThen_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("inSuccess");
        QTest::addColumn<QString>("inContacts");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("told");
        const auto row = [](const char* before, const char* inSuccess, const char* inContacts, const char* after,
                            const char* told) {
            QTest::addRow("%s (%s, %s) %s", before, inSuccess, inContacts, after)
                << QString::fromLatin1(before) << QString::fromLatin1(inSuccess) << QString::fromLatin1(inContacts)
                << QString::fromLatin1(after) << QString::fromLatin1(told);
        };
        row("c", "l", "", "ns", "SCNS");
        row("lc", "", "", "ns", "SCNS");
        row("", "cl", "", "ns", "SCCNS");
        row("", "lc", "", "ns", "SCNS");
        row("", "c", "", "ns", "SCNS");
        row("", "lcl", "", "ns", "SCCNS");
        row("", "l", "", "cns", "SCNS");
        row("c", "!", "", "", "SC");
        row("c", "ns", "n", "s", "SNCNS");
        row("c", "", "", "nsns", "SCNSNS");
    }
    void tellsWhatIsTrueByThen()
    {
        QFETCH(const QString, before);
        QFETCH(const QString, inSuccess);
        QFETCH(const QString, inContacts);
        QFETCH(const QString, after);
        Fixture f;
        f.after(u"sp"_s + before);
        f.log.on(Fixture::success, [&] {
            f.log.on(u"contacts"_s, [&] {
                for (const QChar step : inContacts)
                    f.happen(step);
            });
            for (const QChar step : inSuccess)
                f.happen(step);
        });
        try {
            f.happen(u'a');
        } catch (int) {
            QCOMPARE(inSuccess, u"!"_s);
        }
        QTEST(f.after(after), "told");
    }
};

ZEL_TEST(TstZELSPServices)
#include "tst_zelspservices.moc"
