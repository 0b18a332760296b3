// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <vx/platform/zel/ApplicationPermissions.h>
#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/Requests.h>
#include <vx/platform/zel/UserProfile.h>

#include <zelcore/TestService.h>

#include <QtCore/QThread>

using namespace std::chrono_literals;
using namespace vx::platform::zel;

namespace {

const QByteArray png = "\x89PNG\r\n\x1a\n";
const QByteArray gif = "GIF89a icon";
const QString longestText = QString(98, u'x') + u"\r\n"_s;
const QString longestCookie(128, u'c');
const QByteArray largestIcon = gif.leftJustified(32768);

/// An answer in words.
struct Text
{
    static QString of(const QString& value) { return value; }
    static QString of(EcoIdStatus::Type status) { return QString::number(status); }
    static QString of(const Picture& picture)
    {
        return QString::number(picture.type) + QString::fromLatin1(picture.data.toHex());
    }
    static QString of(const ProfileBoxItem& item) { return u"%1 %2"_s.arg(item.text()).arg(item.iconId()); }
};

/// What became of a future: "waits", "cancelled", "done", the value, or why it failed.
template <typename T>
QString outcomeOf(QFuture<T> future)
{
    if (!future.isFinished())
        return u"waits"_s;
    try {
        future.waitForFinished();
        if (future.isCanceled())
            return u"cancelled"_s;
        if constexpr (std::is_void_v<T>)
            return u"done"_s;
        else
            return Text::of(future.result());
    } catch (const RequestError& error) {
        return QVariant::fromValue(error.reason()).toString() + u": "_s + error.errorString();
    }
}

/// A future of any type.
struct Pending
{
    template <typename T>
    Pending(QFuture<T> future) // NOLINT: as which it is passed on
        : outcome([future] { return outcomeOf(future); })
        , cancel([future]() mutable { future.cancel(); })
    {
    }

    std::function<QString()> outcome;
    std::function<void()> cancel;
};

/// What became of all when they have ended, or of those that did in time.
QStringList endsOf(const QList<Pending>& all)
{
    QStringList outcomes;
    for (const Pending& one : all) {
        [[maybe_unused]] const bool hasEnded = QTest::qWaitFor([&] { return one.outcome() != u"waits"_s; });
        outcomes += one.outcome().section(u':', 0, 0);
    }
    return outcomes;
}

using Ask = std::function<Pending(Requests&)>;

struct Case
{
    const char* name;
    Ask ask;
    QString answer;
};

/// In the world that init() makes, where all can be asked for at once.
const QList<Case> cases{
    {"picture", [](Requests& r) { return r.displayPicture(u"anna"_s); }, Text::of(Picture{ImageType::Png, png})},
    {"eco id", [](Requests& r) { return r.ecoId(u"pp-x"_s); }, u"eco-x"_s},
    {"eco status", [](Requests& r) { return r.ecoIdStatus(u"eco-x"_s); }, u"2"_s},
    {"item", [](Requests& r) { return r.addItem(u"x"_s, u"c"_s); }, u"x -1"_s},
    {"item, icon there", [](Requests& r) { return r.addItem(u"x"_s, 7, u"c"_s); }, u"x 7"_s},
    {"item and icon",
     [](Requests& r) { return r.addItemWithIcon(longestText, 8, ImageType::Gif, largestIcon, longestCookie); },
     longestText + u" 8"_s},
    {"item and icon, icon there", [](Requests& r) { return r.addItemWithIcon(u"x"_s, 7, {}, png, {}); }, u"x 7"_s},
    {"removal", [](Requests& r) { return r.removeItem(u"item-1"_s); }, u"done"_s},
    {"new icon", [](Requests& r) { return r.registerIcon(9, ImageType::Gif, gif); }, u"done"_s},
    {"icon", [](Requests& r) { return r.retrieveIcon(7); }, Text::of(Picture{ImageType::Gif, gif})},
    {"message", [](Requests& r) { return r.updatePersonalMessage(u"new"_s); }, u"done"_s},
    {"status", [](Requests& r) { return r.updateStatus(UserStatus::Busy, u"new"_s); }, u"done"_s},
    {"own picture", [](Requests& r) { return r.updateDisplayPicture(ImageType::Png, png); }, u"done"_s},
};

} // namespace

/// Against the simulated core service, as an application's own test would.
class TstRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_service = std::make_unique<zelcore::TestService>();
        QVERIFY2(m_service->isRunning(), qPrintable(m_service->problem()));
        for (const char* command : {"state Success", "contact add anna", "contact add ben", "box add there",
                                    "eco pp-x eco-x", "eco-status eco-x PendingContactExists"})
            QVERIFY(m_service->execute(QString::fromLatin1(command)));
        QVERIFY(m_service->setContactPicture(u"anna"_s, png));
        QVERIFY(m_service->addBoxIcon(7, gif));

        m_context = std::make_unique<Context>(QUuid::createUuid());
        Requests early(m_context.get());
        QVERIFY(outcomeOf(early.ecoId(u"pp-x"_s)).startsWith(u"NoAccess"_s));
        QTRY_VERIFY(m_context->isReady());
        const ContactService contacts(m_context.get());
        QTRY_VERIFY(contacts.isComplete());
    }

    void cleanup()
    {
        m_context.reset();
        m_service.reset();
    }

    void everyRequestEnds_data()
    {
        QTest::addColumn<QString>("outcome"); // of all; empty: an answer each
        QTest::newRow("answered") << QString();
        QTest::newRow("service away") << u"TimedOut"_s;
        QTest::newRow("cancelled") << u"cancelled"_s;
        QTest::newRow("access lost") << u"AccessLost"_s;
        QTest::newRow("context gone") << u"AccessLost"_s;
        QTest::newRow("requests gone") << u"cancelled"_s;
    }

    void everyRequestEnds()
    {
        const QLatin1String end(QTest::currentDataTag());
        QFETCH(QString, outcome);
        auto requests = std::make_unique<Requests>(m_context.get());
        requests->setTimeout(end == "service away"_L1 ? 1ms : 0ms);
        if (end == "service away"_L1)
            m_service->goAway();
        QList<Pending> all;
        for (const Case& one : cases) {
            all += one.ask(*requests);
            QVERIFY2(all.last().outcome() == u"waits"_s, one.name);
        }
        if (end == "cancelled"_L1)
            std::for_each(all.begin(), all.end(), [](Pending& one) { one.cancel(); });
        else if (end == "access lost"_L1)
            m_service->setRegistrationState(u"Expired"_s);
        else if (end == "context gone"_L1)
            m_context.reset();
        else if (end == "requests gone"_L1)
            requests.reset();

        QStringList expected;
        for (const Case& one : cases)
            expected += outcome.isEmpty() ? one.answer : outcome;
        QCOMPARE(endsOf(all), expected);
    }

    void refusesWithWords()
    {
        Requests requests(m_context.get());
        const auto expect = [&](const char* words, const Ask& ask) {
            const QString outcome = ask(requests).outcome();
            QVERIFY2(outcome.startsWith(u"Refused: "_s) && outcome.contains(QLatin1String(words)), qPrintable(outcome));
        };
        expect("no contact has the handle \"carl\"", [](Requests& r) { return r.displayPicture(u"carl"_s); });
        expect("the identifier is empty", [](Requests& r) { return r.ecoIdStatus({}); });
        expect("the text is empty", [](Requests& r) { return r.addItem(u""_s, {}); });
        expect("the text has 101 characters", [](Requests& r) { return r.addItem(QString(101, u'x'), {}); });
        expect("more than 2 line breaks", [](Requests& r) { return r.addItem(u"\r\n\n"_s, 7, {}); });
        expect("the cookie has 129 characters", [](Requests& r) { return r.addItem(u"x"_s, QString(129, u'x')); });
        expect("0 or more, and not -1", [](Requests& r) { return r.addItem(u"x"_s, -1, {}); });
        expect("an item: it has no bytes", [](Requests& r) { return r.addItemWithIcon(u"x"_s, 9, {}, {}, {}); });
        expect("the box has no item \"\"", [](Requests& r) { return r.removeItem(u""_s); });
        expect("no icon of the id 9", [](Requests& r) { return r.retrieveIcon(9); });
        expect("the id 7 is registered", [](Requests& r) { return r.registerIcon(7, ImageType::Gif, gif); });
        expect("0 or more, and not -2", [](Requests& r) { return r.registerIcon(-2, ImageType::Gif, gif); });
        expect("it has 32769 bytes", [](Requests& r) { return r.registerIcon(9, {}, QByteArray(32769, 'x')); });
        expect("picture: it has no bytes", [](Requests& r) { return r.updateDisplayPicture({}, QByteArray("")); });
        expect("another one is on its way", [](Requests& r) {
            r.updateDisplayPicture(ImageType::Png, png);
            return r.updateDisplayPicture(ImageType::Gif, gif);
        });
        expect("on another thread", [](Requests& r) {
            std::optional<Pending> pending;
            const std::unique_ptr<QThread> thread(QThread::create([&] { pending = r.ecoId(u"pp-x"_s); }));
            thread->start();
            thread->wait();
            return *pending;
        });
        m_service->setPermissions({.showAppBox = false});
        const ApplicationPermissions permissions(m_context.get());
        QTRY_COMPARE(permissions.permissionValue(Permission::ProfileUpdatesAllowed), PermissionValue::Denied);
        expect("does not allow", [](Requests& r) { return r.addItem(u"x"_s, {}); });
    }

    void itemsWaitForTheirIconAndEqualOnesEndInTheirOrder()
    {
        Requests requests(m_context.get());
        QStringList sent;
        connect(m_service.get(), &zelcore::Simulator::messageReceived, &requests,
                [&](int, const QString& type) { sent += type; });
        requests.registerIcon(0, ImageType::Gif, gif).cancel(); // which ends the waiting alone
        requests.addItemWithIcon(u"twice"_s, 0, ImageType::Gif, gif, u"c"_s).cancel();
        const auto first = requests.addItemWithIcon(u"twice"_s, 0, ImageType::Gif, gif, u"c"_s);
        const auto second = requests.addItemWithIcon(u"twice"_s, 0, ImageType::Gif, gif, u"c"_s);
        const auto last = requests.addItemWithIcon(u"twice"_s, 0, ImageType::Gif, gif, u"d"_s);
        QTRY_VERIFY(second.isFinished() && first.isFinished() && last.isFinished());
        QCOMPARE(QStringList({first.result().id(), second.result().id(), last.result().id()}),
                 QStringList({u"item-2"_s, u"item-3"_s, u"item-5"_s}));
        const QString item = u"createProfileBoxItem"_s;
        QCOMPARE(sent, QStringList({u"createProfileBoxImage"_s, u"stream"_s, item, item, item, item}));
    }

    void aProfileThatHasTheValueEndsTheRequest()
    {
        Requests requests(m_context.get());
        const UserProfile profile(m_context.get());
        const QString now = profile.personalMessage();
        QCOMPARE(outcomeOf(requests.updatePersonalMessage(now)), u"done"_s);
        const auto there = requests.updatePersonalMessage(now + u'+');
        const auto again = requests.updatePersonalMessage(now + u'+');
        const auto back = requests.updatePersonalMessage(now);
        QVERIFY(!back.isFinished()); // another one is on its way
        QCOMPARE(endsOf({back, there, again}), QStringList(3, u"done"_s));
        QCOMPARE(profile.personalMessage(), now);
    }

    void picturesMayBeAskedForWhileTheListIsAnnounced()
    {
        const ContactService contacts(m_context.get());
        Requests requests(m_context.get());
        QList<Pending> inner;
        connect(&contacts, &ContactService::contactListUpdated, &requests, [&] {
            inner += requests.displayPicture(u"anna"_s);
            inner += requests.displayPicture(u"carl"_s);
        });
        const auto outer = requests.displayPicture(u"anna"_s);
        QCOMPARE(outcomeOf(requests.displayPicture(u"ben"_s)), Text::of(Picture())); // there is none to wait for
        QCOMPARE(inner.size(), 2);
        QVERIFY(inner.at(1).outcome().startsWith(u"Refused"_s));
        QCOMPARE(endsOf({outer, inner.at(0)}), QStringList(2, Text::of(Picture{ImageType::Png, png})));
    }

    void mayBeDestroyedWhileItsFuturesEnd()
    {
        for (const bool isAnswered : {true, false}) {
            const QString ppId = isAnswered ? u"pp-x"_s : u"pp-y"_s;
            auto requests = std::make_unique<Requests>(m_context.get());
            requests->ecoId(ppId).then([&](const QString&) { requests.reset(); }).onFailed([&] {
                requests->ecoId(ppId);
                requests.reset();
            });
            const Pending second = requests->ecoId(ppId);
            auto other = requests->ecoId(ppId + u'2');
            QString late; // asked for while it is destroyed
            other.onCanceled([&, dying = requests.get()] { return late = outcomeOf(dying->ecoId(ppId)); });
            if (!isAnswered)
                m_service->setRegistrationState(u"Expired"_s);
            QTRY_VERIFY(!requests);
            QCOMPARE(endsOf({second, other}), isAnswered ? QStringList({u"eco-x"_s, u"cancelled"_s})
                                                         : QStringList({u"AccessLost"_s, u"AccessLost"_s}));
            QCOMPARE(late.section(u':', 0, 0), isAnswered ? u"NoAccess"_s : QString());
        }
    }

private:
    std::unique_ptr<zelcore::TestService> m_service;
    std::unique_ptr<Context> m_context;
};

ZEL_TEST(TstRequests)
#include "tst_requests.moc"
