// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactManager.h>

#include "Stage.h"

#include <common/Random.h>
#include <iface/Round.h>
#include <splib/channel/StreamRequests.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <memory>

namespace {

/// Users are numbers. A record is "number name picture handle": the picture may be missing, the handle goes by the
/// number unless it is given, - stands for an empty text, and ? for one that is missing.
struct ContactsStage : Stage
{
    using Manager = zelsplib::PlatformContactManager<RecordingHandler>;
    std::unique_ptr<Manager> manager = std::make_unique<Manager>(multiplexer, stream, &gates);
    zelsplib::StreamRequests others{stream, [](const QString&, const QString&) {}}; ///< of another manager

    static QString userId(const QString& number) { return number.isEmpty() ? u""_s : u"user"_s + number; }

    static QJsonArray ids(const QStringList& numbers)
    {
        QJsonArray ids;
        for (const QString& number : numbers)
            ids.append(QJsonObject{{u"userId"_s, userId(number)}});
        return ids;
    }
    static QJsonObject record(const QStringList& words)
    {
        QJsonObject record{{u"userId"_s, userId(words.value(0))}, {u"handle"_s, u'h' + words.value(0)}};
        const QString members[] = {u"userId"_s, u"displayName"_s, u"avatarId"_s, u"handle"_s};
        for (qsizetype i = 1; i < words.size(); ++i) {
            if (words[i] == u"?")
                record.remove(members[i]);
            else
                record.insert(members[i], words[i] == u"-" ? QString() : words[i]);
        }
        return record;
    }

    void send(const char* message, const char* type, const QJsonArray& elements)
    {
        pipe->inject("{'@':{'type':'@','elements':@,'last':true,'cookie':'@'}}",
                     {message, type, QJsonDocument(elements).toJson(QJsonDocument::Compact), pipe->cookie()});
    }

    ContactsStage()
    {
        manager->eventHandler().log = &log;
        manager->setEventsEnabled(true);
        steps[u"init"_s] = [this](auto&) { manager->init(); };
        steps[u"ids"_s] = [this](auto& words) {
            send("listAll", "platformContact", {});
            send("listChunk", "platformContact", ids(words));
        };
        steps[u"add"_s] = [this](auto& words) { send("listAdd", "platformContact", ids(words)); };
        steps[u"remove"_s] = [this](auto& words) { send("listRemove", "platformContact", ids(words)); };
        steps[u"record"_s] = [this](auto& words) { send("listAdd", "platformUser", {record(words)}); };
        steps[u"change"_s] = [this](auto& words) { send("listChange", "platformUser", {record(words)}); };
        steps[u"answer"_s] = [this](auto& words) {
            send("listElements", "platformUser", {});
            send("listChunk", "platformUser", words.isEmpty() ? QJsonArray() : QJsonArray{record(words)});
        };
        steps[u"invite"_s] = [this](auto& words) {
            pipe->inject("{'connectionInvitationReceived':{'userId':'@'}}", {userId(words.value(0)).toUtf8()});
        };
        steps[u"fetch"_s] = [this](auto& words) { note(manager->retrieveAvatar(userId(words.value(0)))); };
        steps[u"together"_s] = [this](auto& words) {
            iface::Round::together([&] { play(words.join(u' ').replace(u" and "_s, u"\n"_s)); });
        };
        steps[u"elsewhere"_s] = [this](auto& words) { others.request(userId(words[0]), words[1]); };
        steps[u"list"_s] = [this](auto&) { manager->getContactList(); };
        steps[u"events"_s] = [this](auto& words) { manager->setEventsEnabled(words[0] == u"on"); };
    }
};

/// What the application asks for in the slot of readiness holds every contact, and none of them is an install.
const auto ready = u"init \n turn -> requestListAll platformContact \n record 0 n \n record 1 n \n record 2 n \n"
                   "when gate contacts : list \n ids 0 1 2 -> gate contacts; contacts h0 h1 h2 \n"_s;

} // namespace

class TstPlatformContactManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Records that come late, twice, without a handle, out of order, and for ids that went away meanwhile.
    void agreesWithANaiveListUnderRandomMessages()
    {
        QRandomGenerator random = seededRandom();
        ContactsStage stage;
        stage.play(u"init \n turn -> requestListAll platformContact \n ids -> gate contacts"_s);
        QStringList ids;
        QMap<QString, QString> names;
        QSet<QString> withHandle;
        const auto shown = [&](const QString& number) {
            return ids.contains(number) && withHandle.contains(number) ? names.value(number) : QString();
        };
        for (int step = 0; step < 3000; ++step) {
            const QString number = QString::number(random.bounded(25));
            const QString before = shown(number);
            const QStringList steps{u"add"_s, u"remove"_s, u"turn"_s, u"answer"_s, u"record"_s, u"change"_s};
            const int kind = random.bounded(names.contains(number) ? 6 : 5);
            QString happens = steps[kind] + (kind == 2 || kind == 3 ? QString() : u' ' + number);
            if (kind == 0 && !ids.contains(number))
                ids.append(number);
            if (kind == 1)
                ids.removeOne(number);
            if (kind > 3) { // a change without a handle keeps the one that is known
                const bool hasHandle = random.bounded(4) != 0;
                names[number] = QString::number(random.bounded(5));
                happens += u' ' + names[number] + (hasHandle ? u" - h"_s + number : u" - ?"_s);
                if (hasHandle)
                    withHandle.insert(number);
                else if (kind == 4)
                    withHandle.remove(number);
            }
            stage.happen(happens);
            stage.pipe->takeSentInWords(); // requests, which are answered without a word, or not at all
            const QString after = shown(number);
            QString expected;
            if (before.isEmpty() != after.isEmpty())
                expected = (after.isEmpty() ? u"uninstall h"_s : u"install h"_s) + number;
            else if (before != after)
                expected = u"update h%1 %2 %3"_s.arg(number, before, after);
            QCOMPARE(stage.heard(), expected);
            QStringList handles{u"contacts"_s};
            for (const QString& id : std::as_const(ids)) {
                if (!shown(id).isEmpty())
                    handles.append(u'h' + id);
            }
            stage.happen(u"list"_s);
            QCOMPARE(stage.heard(), handles.join(u' '));
        }
    }

    void tellsItsStory_data();
    void tellsItsStory()
    {
        QFETCH(const QString, story);
        ContactsStage stage;
        stage.play(story);
        const QString line = u"5: PlatformContactManager::checkUserListState(): All contacts are initialized. "
                             "PlatformContact list is ready."_s;
        QCOMPARE(stage.slog.lines().count(line), 1);
    }

    void tellsOnThoughSomebodyThrows()
    {
        ContactsStage stage;
        const auto throws = [] { throw 1; };
        stage.play(u"init \n turn -> requestListAll platformContact \n ids 0 \n"_s);
        stage.log.on(u"gate contacts"_s, throws);
        QVERIFY_THROWS_EXCEPTION(int, stage.happen(u"record 0 n"_s));
        stage.play(u"record 1 n -> gate contacts \n add 1 -> install h1"_s);
        connect(stage.manager->contactList().impl(), &iface::ObservableImpl::observableChanged, this, throws,
                Qt::SingleShotConnection);
        QVERIFY_THROWS_EXCEPTION(int, stage.happen(u"ids 1 0"_s));
        stage.play(u"remove 0 -> resent; uninstall h0"_s);
    }

    void leavesItsViewToOthers()
    {
        ContactsStage stage;
        stage.play(ready);
        const auto view = stage.manager->contactList();
        stage.manager.reset();
        stage.multiplexer.reset();
        QCOMPARE(stage.pipe->listenerCount(u"connectionInvitationReceived"_s), 0);
        stage.play(u"change 0 m \n record 9 n \n add 9 \n remove 1 \n add 1"_s);
        QCOMPARE(view.size(), 4);
        stage.play(u"ids"_s);
        QCOMPARE(view.size(), 0);
    }
};

void TstPlatformContactManager::tellsItsStory_data()
{
    QTest::addColumn<QString>("story");
    const auto row = [](const char* name, const char* story) {
        QTest::newRow(name) << QString(ready + QLatin1String(story));
    };

    QTest::newRow("ready with the last record") << uR"(
        init
        turn               -> requestListAll platformContact
        ids 0 1 2
        record 2 n
        record 0 n
        record 1 n ? ?
        turn
        record 0 n ? -     -> uninstall h0
        record 1 n
        record 0 n         -> gate contacts
        remove 0           -> uninstall h0
        record 1 n ? -     -> uninstall h1
        record 1 n         -> install h1
    )"_s;
    row("events are off", R"(
        events off
        change 0 m p
        record 7 n
        add 7
        remove 1
        invite 0
        fetch 0            -> taken; requestUserAvatar user0 p
        stream p bytes
        list               -> contacts h0 h2 h7
        fetch 7            -> picture h7 - -; taken
        events on
        remove 7           -> uninstall h7
    )");
    row("a list sent anew, and nobody in it", R"(
        ids 0 1 2          -> resent
        ids 1 0 2          -> resent
        list               -> contacts h1 h0 h2
        ids 1 7 2          -> resent
        list               -> contacts h1 h2
        ids 1              -> resent
        turn               -> requestListElements user7 platformUser
        ids 1 8            -> resent
        answer
        turn               -> requestListElements user8 platformUser
        answer 8 n         -> install h8
    )");
    // In which the same contact changes again and another goes.
    row("an event loop in a slot", R"(
        when update h0 n m : change 0 o p2 : remove 1 : list
        change 0 m p1      -> update h0 n m; update h0 m o; uninstall h1; contacts h0 h2; requestUserAvatar user0 p2; requestUserAvatar user0 p2
        stream p1 one
        stream p2 two      -> picture h0 p2 two
    )");
    row("changes that are told as one", R"(
        together change 0 m and change 2 o -> update h0 n m; update h1 n n; update h2 n o
        together record 0 n ? - and record 1 n ? -
        list               -> contacts h2
    )");
    row("whoever was away with the service", R"(
        ids 1 2            -> resent
        add 0
        turn               -> requestListElements user0 platformUser
        wait 30
        turn               -> requestListElements user0 platformUser
        record 0 n         -> install h0
        wait 600
        turn
    )");
    row("invitations", R"(
        invite 0           -> invitation h0
        invite 9           -> invitation -
        invite             -> invitation -
    )");
    row("all who wait for one picture", R"(
        change 0 m         -> update h0 n m
        change 0 m same    -> update h0 m m; requestUserAvatar user0 same
        change 1 n same    -> update h1 n n; requestUserAvatar user1 same
        change 2 n own     -> update h2 n n; requestUserAvatar user2 own
        fetch              -> Error:PlatformContactManager::retrieveAvatar(): Unable to process empty userId; ignoring; refused
        fetch 5            -> Error:PlatformContactManager::retrieveAvatar(): Platform contact is not initialized; refused
        stream other O
        stream same S      -> picture h0 same S; picture h1 same S
        stream own O       -> picture h2 own O
        stream own again
        fetch 0            -> taken; requestUserAvatar user0 same
        fetch 1            -> taken; requestUserAvatar user1 same
        change 2 o same    -> update h2 n o; requestUserAvatar user2 same
        events off
        change 0 m newer
        change 1 n same -
        events on
        stream same S      -> picture h2 same S; requestUserAvatar user0 newer
    )");
    // As long as a hash, and none; below is one that is too short for one.
    row("a picture for which another manager waits, too", R"(
        elsewhere 0 x*40
        change 0 n x*40     -> update h0 n n; requestUserAvatar user0 x*40
        half x*40 half
        fetch 0            -> taken; requestUserAvatar user0 x*40
        stream x*40 more   -> picture h0 x*40 halfmore
    )");
    row("pictures that were overtaken", R"(
        change 0 n old     -> update h0 n n; requestUserAvatar user0 old
        change 0 n new     -> update h0 n n; requestUserAvatar user0 new
        stream old O
        change 0 n -       -> update h0 n n; picture h0 - -
        stream new N
    )");
    // Somebody who went away still has a picture, but nobody follows it; without a handle it is nobody's.
    row("pictures of who is away", R"(
        change 0 n last    -> update h0 n n; requestUserAvatar user0 last
        remove 0           -> uninstall h0
        stream last L      -> picture h0 last L
        fetch 0            -> taken; requestUserAvatar user0 last
        change 0 n newer
        add 0              -> install h0
        stream last L      -> requestUserAvatar user0 newer
        stream newer N     -> picture h0 newer N
        fetch 0            -> taken; requestUserAvatar user0 newer
        change 0 n newer - -> uninstall h0
        stream newer N
    )");
    row("pictures that do not come", R"(
        change 0 n face    -> update h0 n n; requestUserAvatar user0 face
        change 1 n face    -> update h1 n n; requestUserAvatar user1 face
        change 2 n q       -> update h2 n n; requestUserAvatar user2 q
        wait 20
        fetch 0            -> taken; requestUserAvatar user0 face
        half face cut
        wait 10            -> requestUserAvatar user0 face; requestUserAvatar user1 face; requestUserAvatar user2 q
        stream face P      -> picture h0 face P; picture h1 face P
        remove 2           -> uninstall h2
        change 2 n r
        wait 60            -> requestUserAvatar user2 r
        half r cut
        fetch 2            -> taken; requestUserAvatar user2 r
        stream r third     -> picture h2 r third
        wait 600
    )");
    // One that is named after its hash is asked for again at once, but not for ever: the other side may never do
    // better.
    row("pictures that are not whole", R"(
        change 0 n %whole  -> update h0 n n; requestUserAvatar user0 %whole
        stream %whole a    -> requestUserAvatar user0 %whole
        stream %whole b    -> requestUserAvatar user0 %whole
        stream %whole c
        stream %whole whole -> picture h0 %whole whole
        fetch 0            -> taken; requestUserAvatar user0 %whole
        stream %whole same -> requestUserAvatar user0 %whole
        stream %whole same -> requestUserAvatar user0 %whole
        stream %whole same -> picture h0 %whole same
    )");
}

ZEL_TEST(TstPlatformContactManager)
#include "tst_platformcontactmanager.moc"
