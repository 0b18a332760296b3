// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactManager.h>

#include <splib/channel/StreamRequests.h>

#include <common/TestMain.h>
#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/SeededRandom.h>
#include <common/SlogCapture.h>

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>
#include <QtTest>

#include <map>

using zelsplib::PlatformContact;

namespace {

using Manager = zelsplib::PlatformContactManager<RecordingContactList>;

QString userId(int number)
{
    return QStringLiteral("user%1").arg(number);
}
QString handleOf(int number)
{
    return QStringLiteral("h%1").arg(number);
}

QJsonObject record(int number, const QString& name = QStringLiteral("n"))
{
    return {{QStringLiteral("userId"), userId(number)},
            {QStringLiteral("handle"), handleOf(number)},
            {QStringLiteral("displayName"), name}};
}
QJsonObject withPicture(QJsonObject object, const QString& avatarId)
{
    object.insert(QStringLiteral("avatarId"), avatarId);
    return object;
}

/// The manager and the other end of its pipe, which answers requests only when told to.
struct Fixture
{
    explicit Fixture(bool areEventsEnabled = true)
    {
        gates.log = &log;
        manager.eventHandler().log = &log;
        manager.setEventsEnabled(areEventsEnabled);
    }

    void init()
    {
        manager.init();
        QTRY_COMPARE(pipe->sentCount(), 1);
        QVERIFY(pipe->expectSent(R"({"requestListAll":{"type":"platformContact"}})"));
    }

    /// Brings the manager to readiness with contacts 0 to count - 1.
    void becomeReady(int count)
    {
        init();
        for (int i = 0; i < count; ++i)
            people[userId(i)] = record(i);
        sendIds(count);
        answerUntil([this] { return manager.isListReady(); });
        log.take();
    }

    void send(const char* message, const char* type, const QJsonArray& elements, QJsonObject body = {})
    {
        body.insert(QStringLiteral("type"), QLatin1String(type));
        body.insert(QStringLiteral("elements"), elements);
        inject(message, body);
    }
    void inject(const char* message, const QJsonObject& body)
    {
        const QJsonObject envelope{{QLatin1String(message), body}};
        QVERIFY(pipe->inject(QJsonDocument(envelope).toJson(QJsonDocument::Compact)));
    }

    static QJsonObject id(const QString& user) { return {{QStringLiteral("userId"), user}}; }

    /// The whole list of ids, in chunks.
    void sendIds(int count)
    {
        QStringList ids;
        for (int i = 0; i < count; ++i)
            ids.append(userId(i));
        sendIds(ids);
    }
    void sendIds(const QStringList& ids)
    {
        constexpr int ChunkSize = 100;
        inject("listAll", {{QStringLiteral("type"), QStringLiteral("platformContact")}});
        for (int start = 0; start == 0 || start < ids.size(); start += ChunkSize) {
            QJsonArray elements;
            for (const QString& user : ids.mid(start, ChunkSize))
                elements.append(id(user));
            const bool isLast = start + ChunkSize >= ids.size();
            send("listChunk", "platformContact", elements, {{QStringLiteral("last"), isLast}});
        }
    }

    void addId(int number) { send("listAdd", "platformContact", {id(userId(number))}); }
    void removeId(int number) { send("listRemove", "platformContact", {id(userId(number))}); }
    void addRecord(const QJsonObject& object) { send("listAdd", "platformUser", {object}); }
    void changeRecord(const QJsonObject& object) { send("listChange", "platformUser", {object}); }

    /// Answers the oldest request for records, with those that are known.
    void answer()
    {
        const QJsonObject request =
            QJsonDocument::fromJson(pipe->takeSent())[QLatin1String("requestListElements")].toObject();
        const QJsonArray keys = request[QLatin1String("elements")].toArray();
        QVERIFY(keys.size() <= 20);
        QJsonArray elements;
        for (const QJsonValue& key : keys) {
            const auto known = people.find(key[QLatin1String("userId")].toString());
            if (known != people.end())
                elements.append(known->second);
        }
        inject("listElements", {{QStringLiteral("type"), QStringLiteral("platformUser")},
                                {QStringLiteral("cookie"), request[QLatin1String("cookie")]}});
        send("listChunk", "platformUser", elements, {{QStringLiteral("last"), true}});
    }
    template <class Condition>
    void answerUntil(Condition condition)
    {
        const auto step = [&] {
            while (pipe->sentCount() > 0)
                answer();
            return condition();
        };
        QTRY_VERIFY(step());
    }

    QStringList handles() const
    {
        QStringList all;
        const QList<PlatformContact> contacts = manager.contactList().toList();
        for (const PlatformContact& contact : contacts)
            all.append(contact.getHandle());
        return all;
    }

    void sendPicture(const char* streamId, const QByteArray& bytes)
    {
        inject("stream", {{QStringLiteral("id"), QLatin1String(streamId)},
                          {QStringLiteral("value"), QString::fromLatin1(bytes.toBase64())},
                          {QStringLiteral("last"), true}});
    }

    EventLog log;
    RecordingGates gates;
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    QSharedPointer<zel::ListApiMultiplexer> multiplexer = QSharedPointer<zel::ListApiMultiplexer>::create(pipe);
    QSharedPointer<zel::JsonStream> stream = QSharedPointer<zel::JsonStream>::create(pipe);
    Manager manager{multiplexer, stream, &gates};
    std::map<QString, QJsonObject> people;
};

} // namespace

class TstPlatformContactManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Records that come late, twice, without a handle, out of order, and for ids that went away meanwhile.
    void agreesWithANaiveListUnderRandomMessages()
    {
        QRandomGenerator random = seededRandom();
        Fixture f;
        f.init();
        f.sendIds({});
        QTRY_VERIFY(f.manager.isListReady());
        f.log.take();

        QList<int> ids;
        std::map<int, QJsonObject> stored;
        const auto contactOf = [&](int number) {
            const QJsonObject known = stored.count(number) ? stored[number] : QJsonObject();
            return ids.contains(number) && known.contains(QLatin1String("handle")) ? known : QJsonObject();
        };
        for (int step = 0; step < 3000; ++step) {
            const int number = random.bounded(25);
            const QJsonObject before = contactOf(number);
            QJsonObject object = record(number, QString::number(random.bounded(5)));
            if (random.bounded(4) == 0)
                object.remove(QStringLiteral("handle"));
            switch (random.bounded(5)) {
            case 0:
                if (!ids.contains(number))
                    ids.append(number);
                f.addId(number);
                break;
            case 1:
                ids.removeOne(number);
                f.removeId(number);
                break;
            case 2:
                stored[number] = object;
                f.addRecord(object);
                break;
            case 3:
                if (stored.count(number)) {
                    const QJsonObject old = std::exchange(stored[number], object);
                    if (!object.contains(QLatin1String("handle")) && old.contains(QLatin1String("handle")))
                        stored[number].insert(QStringLiteral("handle"), old[QLatin1String("handle")]);
                    f.changeRecord(object);
                }
                break;
            default:
                // Requests are answered without a word, long after, or not at all.
                QCoreApplication::processEvents();
                if (f.pipe->sentCount() > 0)
                    f.answer();
                break;
            }
            const QJsonObject after = contactOf(number);
            QStringList expected;
            const QString name = QStringLiteral("displayName");
            if (before.isEmpty() && !after.isEmpty())
                expected.append(QStringLiteral("install ") + handleOf(number));
            else if (!before.isEmpty() && after.isEmpty())
                expected.append(QStringLiteral("uninstall ") + handleOf(number));
            else if (before != after)
                expected.append(QStringLiteral("update %1 %2 %3")
                                    .arg(handleOf(number), before[name].toString(), after[name].toString()));
            QCOMPARE(f.log.take(), expected);
            QStringList handles;
            for (const int known : ids) {
                if (!contactOf(known).isEmpty())
                    handles.append(handleOf(known));
            }
            QCOMPARE(f.handles(), handles);
        }
    }

    void becomesReadyWithTheLastRecord()
    {
        SlogCapture slog;
        Fixture f;
        f.init();
        f.sendIds(3);
        f.addRecord(record(2));
        f.addRecord(record(0));
        f.addRecord({{QStringLiteral("userId"), userId(1)}});
        QCoreApplication::processEvents();
        QVERIFY(!f.manager.isListReady());
        // What the application then asks for holds every contact, and none of them is an install.
        f.log.on(QStringLiteral("gate contacts"), [&] { f.manager.getContactList(); });
        f.addRecord(record(1));
        QCOMPARE(f.log.take(), lines({"gate contacts", "contacts h0 h1 h2"}));
        QVERIFY(f.manager.isListReady());
        const QString line =
            QStringLiteral("PlatformContactManager::checkUserListState(): All contacts are initialized. "
                           "PlatformContact list is ready.");
        QCOMPARE(slog.lines(5).count(line), 1);
        f.removeId(0);
        f.addRecord({{QStringLiteral("userId"), userId(1)}});
        f.addRecord(record(1));
        QCOMPARE(slog.lines(5).count(line), 1);
    }

    void countsAContactThatLostItsHandleAsMissing()
    {
        Fixture f;
        f.init();
        f.sendIds(2);
        f.addRecord(record(0));
        f.addRecord({{QStringLiteral("userId"), userId(0)}, {QStringLiteral("handle"), QString()}});
        f.addRecord(record(1));
        QCoreApplication::processEvents();
        QVERIFY(!f.manager.isListReady());
        f.addRecord(record(0));
        QTRY_VERIFY(f.manager.isListReady());
        QCOMPARE(f.log.take(), lines({"uninstall h0", "gate contacts"}));
    }

    void becomesReadyOnceThoughSomebodyThrows()
    {
        Fixture f;
        f.init();
        f.sendIds(1);
        f.log.on(QStringLiteral("gate contacts"), [] { throw 1; });
        QVERIFY_THROWS_EXCEPTION(int, f.addRecord(record(0)));
        f.addRecord(record(1));
        f.addId(1);
        QCOMPARE(f.log.take(), lines({"gate contacts", "install h1"}));
    }

    void keepsStillWhileEventsAreOff()
    {
        Fixture f(false);
        f.becomeReady(2);
        f.changeRecord(withPicture(record(0, QStringLiteral("m")), QStringLiteral("p")));
        f.addRecord(record(7));
        f.addId(7);
        f.removeId(1);
        f.inject("connectionInvitationReceived", Fixture::id(userId(0)));
        QVERIFY(f.manager.retrieveAvatar(userId(0)));
        f.sendPicture("p", "bytes");
        QCOMPARE(f.log.take(), QStringList());
        f.manager.getContactList();
        QVERIFY(f.manager.retrieveAvatar(userId(7))); // who has no picture
        QCOMPARE(f.log.take(), lines({"contacts h0 h7", "picture h7  "}));
        f.manager.setEventsEnabled(true);
        f.removeId(7);
        QCOMPARE(f.log.take(), lines({"uninstall h7"}));
    }

    void tellsOfAListSentAnewAndOfNobodyInIt()
    {
        Fixture f;
        f.becomeReady(3);
        f.sendIds(3);
        f.sendIds({userId(1), userId(0), userId(2)});
        QCOMPARE(f.handles(), lines({"h1", "h0", "h2"}));
        f.sendIds({userId(1), userId(7), userId(2)});
        QCOMPARE(f.handles(), lines({"h1", "h2"}));
        f.sendIds({userId(0)});
        QCOMPARE(f.log.take(), lines({"resent ", "resent ", "resent ", "resent "}));
        // What comes one by one after that is news again.
        f.people[userId(8)] = record(8);
        f.sendIds({userId(0), userId(8)});
        f.answerUntil([&] { return f.log.lines().size() == 2; });
        QCOMPARE(f.log.take(), lines({"resent ", "install h8"}));
    }

    void reportsAgainAfterSomebodyThrewAtANewList()
    {
        Fixture f;
        f.becomeReady(2);
        const auto view = f.manager.contactList();
        {
            QObject observer;
            connect(view.impl(), &iface::ObservableImpl::observableChanged, &observer, [] { throw 1; });
            QVERIFY_THROWS_EXCEPTION(int, f.sendIds({userId(1), userId(0)}));
        }
        f.removeId(0);
        QCOMPARE(f.log.take(), lines({"resent ", "uninstall h0"}));
    }

    void keepsTheOrderOfEventsThroughANestedLoop()
    {
        Fixture f;
        f.becomeReady(3);
        // A slot that spins an event loop, in which the same contact changes again and others come and go.
        f.log.on(QStringLiteral("update h0 n m"), [&] {
            f.changeRecord(withPicture(record(0, QStringLiteral("o")), QStringLiteral("p2")));
            f.removeId(1);
            QCOMPARE(f.handles(), lines({"h0", "h2"}));
        });
        f.changeRecord(withPicture(record(0, QStringLiteral("m")), QStringLiteral("p1")));
        QCOMPARE(f.log.take(), lines({"update h0 n m", "update h0 m o", "uninstall h1"}));
        f.sendPicture("p2", "two");
        f.sendPicture("p1", "one");
        QCOMPARE(f.log.take(), lines({"picture h0 p2 two"}));
    }

    void retrievesThePictureOfAChangedContact()
    {
        Fixture f;
        f.becomeReady(2);
        f.pipe->clearSent();
        f.changeRecord(record(0, QStringLiteral("m")));
        QVERIFY(f.pipe->expectNothingSent());
        f.changeRecord(withPicture(record(0, QStringLiteral("m")), QStringLiteral("p")));
        QVERIFY(f.pipe->expectSentText(R"({"requestUserAvatar":{"userId":"user0","streamId":"p"}})"));
        f.sendPicture("q", "other");
        f.sendPicture("p", "bytes");
        f.sendPicture("p", "again");
        QCOMPARE(f.log.take(), lines({"update h0 n m", "update h0 m m", "picture h0 p bytes"}));
        // The bytes travel with the report only.
        QVERIFY(f.manager.getContact(userId(0)).getAvatarData().isEmpty());
    }

    void answersAllWhoWaitForOnePicture()
    {
        Fixture f;
        f.becomeReady(3);
        for (int i = 0; i < 3; ++i)
            f.addRecord(withPicture(record(i), i < 2 ? QStringLiteral("same") : QStringLiteral("own")));
        f.pipe->clearSent();
        f.log.take();
        QVERIFY(!f.manager.retrieveAvatar(QString()));
        QVERIFY(!f.manager.retrieveAvatar(userId(5)));
        QVERIFY(f.manager.retrieveAvatar(userId(1)));
        QVERIFY(f.manager.retrieveAvatar(userId(1)));
        QCOMPARE(f.pipe->sentCount(), 2);
        f.sendPicture("same", "S");
        QCOMPARE(f.log.take(), lines({"picture h0 same S", "picture h1 same S"}));
        f.sendPicture("own", "O");
        QCOMPARE(f.log.take(), lines({"picture h2 own O"}));
        QVERIFY(f.manager.retrieveAvatar(userId(1)));
        f.sendPicture("same", "S");
        QCOMPARE(f.log.take(), lines({"picture h1 same S"}));
    }

    void dropsThePictureThatWasOvertaken()
    {
        Fixture f;
        f.becomeReady(1);
        f.changeRecord(withPicture(record(0), QStringLiteral("old")));
        f.changeRecord(withPicture(record(0), QStringLiteral("new")));
        f.log.take();
        f.sendPicture("old", "O");
        f.sendPicture("new", "N");
        QCOMPARE(f.log.take(), lines({"picture h0 new N"}));
        f.changeRecord(withPicture(record(0), QStringLiteral("third")));
        f.changeRecord(withPicture(record(0), QString()));
        QCOMPARE(f.log.take(), lines({"update h0 n n", "update h0 n n", "picture h0  "}));
        f.sendPicture("third", "T");
        QCOMPARE(f.log.take(), QStringList());
        // Somebody who went away meanwhile still has one.
        f.changeRecord(withPicture(record(0), QStringLiteral("last")));
        f.removeId(0);
        f.log.take();
        f.sendPicture("last", "L");
        QCOMPARE(f.log.take(), lines({"picture h0 last L"}));

        // Nobody follows the picture of somebody who is away.
        QVERIFY(f.manager.retrieveAvatar(userId(0)));
        f.changeRecord(withPicture(record(0), QStringLiteral("newer")));
        f.addId(0);
        f.pipe->clearSent();
        f.sendPicture("last", "L");
        QVERIFY(f.pipe->expectSentText(R"({"requestUserAvatar":{"userId":"user0","streamId":"newer"}})"));
        f.sendPicture("newer", "N");
        QCOMPARE(f.log.take(), lines({"install h0", "picture h0 newer N"}));

        // Without a handle there is nobody whose picture it could be.
        QVERIFY(f.manager.retrieveAvatar(userId(0)));
        f.changeRecord({{QStringLiteral("userId"), userId(0)}, {QStringLiteral("handle"), QString()}});
        f.sendPicture("newer", "N");
        QCOMPARE(f.log.take(), lines({"uninstall h0"}));
    }

    void asksAgainForPictures()
    {
        const auto clock = FakeClock::install();
        const auto uninstall = qScopeGuard(&FakeClock::uninstall);
        Fixture f;
        f.becomeReady(3);
        const auto request = [](int number, const QByteArray& streamId) {
            const QByteArray form = R"({"requestUserAvatar":{"userId":"user#","streamId":"@"}})";
            return QByteArray(form).replace('#', QByteArray::number(number)).replace('@', streamId);
        };
        f.pipe->clearSent();
        f.changeRecord(withPicture(record(0), QStringLiteral("p"))); // fetched by the library itself
        QVERIFY(f.pipe->expectSentText(request(0, "p")));
        f.changeRecord(withPicture(record(1), QStringLiteral("p")));
        f.changeRecord(withPicture(record(2), QStringLiteral("q")));
        f.pipe->clearSent();
        clock->advance(20 * 1000);
        QVERIFY(f.manager.retrieveAvatar(userId(0))); // begins no second wait
        QVERIFY(f.pipe->expectSentText(request(0, "p")));
        const auto half = [&f](const char* streamId) {
            f.inject("stream", {{QStringLiteral("id"), QLatin1String(streamId)},
                                {QStringLiteral("value"), QStringLiteral("aGFsZg==")}});
        };
        half("p"); // and is cut
        f.sendPicture("q", "Q");
        clock->advance(10 * 1000);
        QVERIFY(f.pipe->expectSentText(request(0, "p")));
        QVERIFY(f.pipe->expectSentText(request(1, "p")));
        f.sendPicture("p", "P");
        clock->advance(10 * 60 * 1000);
        QVERIFY(f.pipe->expectNothingSent());
        f.log.take();

        // What is asked for again may be another picture by then.
        QVERIFY(f.manager.retrieveAvatar(userId(2)));
        f.removeId(2);
        f.changeRecord(withPicture(record(2), QStringLiteral("r")));
        f.pipe->clearSent();
        clock->advance(30 * 1000);
        QVERIFY(f.pipe->expectSentText(request(2, "r")));
        half("r");
        QVERIFY(f.manager.retrieveAvatar(userId(2)));
        f.sendPicture("r", "third");
        QCOMPARE(f.log.take(), lines({"uninstall h2", "picture h2 r third"}));
    }

    // A picture that is named after its hash.
    void tellsNoPictureThatIsNotWhole()
    {
        Fixture f;
        f.becomeReady(1);
        const QByteArray hash = QCryptographicHash::hash("whole", QCryptographicHash::Sha1).toHex();
        f.addRecord(withPicture(record(0), QString::fromLatin1(hash)));
        const QByteArray request = f.pipe->takeSent();
        const QString told = QStringLiteral("picture h0 %1 ").arg(QString::fromLatin1(hash));
        const QList<QByteArray> answers[] = {{"whole"},
                                             {"half", "whole"},
                                             {"half", "half", "whole"},
                                             {"a", "b", "c", "whole"},
                                             {"other", "other", "other"}};
        for (const QList<QByteArray>& transfers : answers) {
            f.log.take();
            f.pipe->clearSent();
            QVERIFY(f.manager.retrieveAvatar(userId(0)));
            QVERIFY(f.pipe->expectSentText(request));
            for (const QByteArray& bytes : transfers) {
                QCOMPARE(f.log.take(), QStringList());
                f.sendPicture(hash.constData(), bytes);
            }
            // At once, but not for every one: the other side may never do better, and one that is sure says it again.
            QCOMPARE(f.pipe->sentCount(), qMin(transfers.size() - 1, 2));
            QCOMPARE(f.log.take(), QStringList(told + QString::fromLatin1(transfers.last())));
        }
    }

    // Two managers that wait for the same picture.
    void leavesAloneWhatOthersWaitFor()
    {
        Fixture f;
        f.becomeReady(1);
        f.addRecord(withPicture(record(0), QStringLiteral("p")));
        zelsplib::StreamRequests others(f.stream, [](const QString&, const QString&) {});
        others.request(QStringLiteral("me"), QStringLiteral("p"));
        f.log.take();
        f.inject("stream",
                 {{QStringLiteral("id"), QStringLiteral("p")}, {QStringLiteral("value"), QStringLiteral("aGFsZg==")}});
        QVERIFY(f.manager.retrieveAvatar(userId(0)));
        f.sendPicture("p", " more");
        QCOMPARE(f.log.take(), lines({"picture h0 p half more"}));
    }

    void reportsInvitations()
    {
        Fixture f;
        f.becomeReady(1);
        f.inject("connectionInvitationReceived", Fixture::id(userId(0)));
        f.inject("connectionInvitationReceived", Fixture::id(userId(9)));
        f.inject("connectionInvitationReceived", {});
        QCOMPARE(f.log.take(), lines({"invitation h0", "invitation ", "invitation "}));
    }

    void leavesItsViewToOthers()
    {
        auto f = std::make_unique<Fixture>();
        f->becomeReady(2);
        const auto view = f->manager.contactList();
        const auto pipe = f->pipe;
        f.reset();
        QCOMPARE(view.size(), 2);
        QCOMPARE(pipe->listenerCount(QStringLiteral("connectionInvitationReceived")), 0);
        QVERIFY(pipe->inject(R"({"listChange":{"type":"platformUser","elements":[{"userId":"user0","handle":"x"}]}})"));
    }
};

ZEL_TEST(TstPlatformContactManager)
#include "tst_platformcontactmanager.moc"
