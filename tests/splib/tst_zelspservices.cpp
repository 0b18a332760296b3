// SPDX-License-Identifier: Apache-2.0
#include <splib/ZELSPServices.h>

#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/TestMain.h>

#include <algorithm>
#include <map>
#include <utility>

using namespace Qt::StringLiterals;

using Services = zelsplib::ZELSPServices<RecordingHandler, RecordingHandler, RecordingHandler, RecordingHandler,
                                         RecordingHandler, RecordingHandler, RecordingHandler, RecordingHandler>;

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
        permission({}, "listAdd");
    }

    QString after(const QString& steps)
    {
        happen(steps);
        QString told;
        for (const QString& line : log.take())
            told.append(line == u"contacts" ? u'C' : line == success ? u'S' : u'N');
        return told;
    }

    void happen(const QString& steps)
    {
        for (const QChar step : steps)
            things.at(step)();
    }

    static inline const QString success = u"state Success"_s;

    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    EventLog log;
    Services services{pipe};

private:
    void permission(const QByteArray& members, const QByteArray& message = "listChange")
    {
        pipe->inject("{'@':{'type':'global','elements':[{'name':'permission','value':{@}}]}}", {message, members});
    }
    /// Somebody begins to listen to contacts, and has the list without hearing of it.
    void listen()
    {
        services.contacts()->setEventsEnabled(true);
        services.contacts()->eventHandler().log = nullptr;
        services.contacts()->getContactList();
        services.contacts()->eventHandler().log = &log;
    }

    const std::map<QChar, std::function<void()>> things{
        {u's', [this] { permission(R"("registrationState":"Success")"); }},
        {u'n', [this] { permission(R"("registrationState":"NoDataConnection")"); }},
        {u'b', [this] { permission(R"("showAppBox":true)"); }},
        {u'B', [this] { permission(R"("registrationState":"Success","showAppBox":true)"); }},
        {u'h', [this] { permission(R"("showAppBox":false)"); }},
        {u'p', [this] { services.userProfileIsReady(); }},
        {u'a', [this] { services.userProfileAvatarIsReady(); }},
        {u'x', [this] { services.profileBoxIsReady(); }},
        {u'c', [this] { services.contactsIsReady(); }},
        {u'l', [this] { listen(); }},
        {u'!', [] { throw 1; }},
    };
};

} // namespace

class TstZELSPServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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

    // What happens before the success, in a slot of it, in a slot of the list that follows, and after.
    void tellsWhatIsTrueByThen()
    {
        const std::pair<const char*, const char*> rows[] = {
            {"c|l||ns", "SCNS"},   {"lc|||ns", "SCNS"},    {"|cl||ns", "SCCNS"}, {"|lc||ns", "SCNS"},
            {"|c||ns", "SCNS"},    {"|lcl||ns", "SCCNS"},  {"|l||cns", "SCNS"},  {"c|!||", "SC"},
            {"c|ns|n|s", "SNCNS"}, {"c|||nsns", "SCNSNS"}, {"c|||lns", "SCNS"}};
        for (const auto& [row, told] : rows) {
            const QStringList steps = QString::fromLatin1(row).split(u'|');
            Fixture f;
            f.happen(u"sp"_s + steps[0]);
            f.log.on(Fixture::success, [&] {
                f.log.on(u"contacts"_s, [&] { f.happen(steps[2]); });
                f.happen(steps[1]);
            });
            if (steps[1] == u"!")
                QVERIFY_THROWS_EXCEPTION(int, f.happen(u"a"_s));
            else
                f.happen(u"a"_s);
            QVERIFY2(f.after(steps[3]) == QLatin1String(told), row);
        }
    }
};

ZEL_TEST(TstZELSPServices)
#include "tst_zelspservices.moc"
