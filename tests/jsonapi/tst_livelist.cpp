// SPDX-License-Identifier: Apache-2.0
#include "Note.h"

#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <common/SeededRandom.h>
#include <iface/ListMirror.h>
#include <iface/Logging.h>
#include <iface/ObservableList.h>
#include <iface/ObservableMonitor.h>
#include <zel/LiveList.h>

#include <QRegularExpression>
#include <QTest>

#include <memory>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

using List = zel::LiveList<Note>;
using Handle = iface::ObservableList<Note, List>;

/// Counts the keys that are taken from elements: what rebuilding an index would be seen by.
class CountingAdapter : public NoteAdapter
{
public:
    QString elementToId(const Note& note) override
    {
        ++keysTaken;
        return note.id;
    }
    int keysTaken = 0;
};

/// What a list should hold and have announced after each message, worked out the slow way.
struct Model
{
    QList<Note> items;
    QStringList announced;
    QList<Note> received;
    int transfer = 0; // 0 none, 1 a whole list, 2 elements

    int find(const QString& id) const
    {
        for (int i = int(items.size()) - 1; i >= 0; --i) {
            if (items.at(i).id == id)
                return i;
        }
        return -1;
    }

    static Note read(const QJsonValue& json, Note note)
    {
        const QJsonObject object = json.toObject();
        note.id = object.value(u"id"_s).toString(note.id);
        note.text = object.value(u"text"_s).toString(note.text);
        note.stars = object.value(u"stars"_s).toInt(note.stars);
        return note;
    }

    void apply(const QByteArray& name, const QJsonArray& elements, bool last)
    {
        if (name == "listAll" || name == "listElements") {
            transfer = name == "listAll" ? 1 : 2;
            received.clear();
        } else if (name == "listChunk") {
            takeChunk(elements, last);
        } else {
            for (const QJsonValue& element : elements)
                applyElement(name, element);
        }
    }

    void takeChunk(const QJsonArray& elements, bool last)
    {
        if (transfer == 0)
            return;
        for (const QJsonValue& element : elements)
            received.append(read(element, {}));
        if (!last)
            return;
        if (transfer == 2) {
            for (const Note& note : received) {
                if (const int at = find(note.id); at >= 0) {
                    items[at] = note;
                    announced.append(u"updated %1"_s.arg(at));
                }
            }
        } else if (items != received) {
            items = received;
            announced.append(u"reset"_s);
        }
        transfer = 0;
        received.clear();
    }

    void applyElement(const QByteArray& name, const QJsonValue& element)
    {
        const int at = find(read(element, {}).id);
        if (name == "listAdd" && at < 0) {
            announced.append(u"added %1"_s.arg(items.size()));
            items.append(read(element, {}));
        } else if (name == "listRemove" && at >= 0) {
            announced.append(u"removed %1"_s.arg(at));
            items.removeAt(at);
        } else if ((name == "listAdd" || name == "listChange") && at >= 0) {
            const Note note = read(element, name == "listAdd" ? Note() : items.at(at));
            if (!(note == items.at(at))) {
                announced.append(u"updated %1"_s.arg(at));
                items[at] = note;
            }
        }
    }
};

QJsonValue randomElement(QRandomGenerator& random)
{
    if (random.bounded(40) == 0)
        return 5; // no object at all
    QJsonObject element;
    if (random.bounded(20) > 0)
        element.insert(u"id"_s, QString::number(random.bounded(40)));
    if (random.bounded(2))
        element.insert(u"text"_s, QString::number(random.bounded(3)));
    if (random.bounded(3))
        element.insert(u"stars"_s, random.bounded(3));
    return element;
}

} // namespace

class TstLiveList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        clock = FakeClock::install();
        pipe = QSharedPointer<FakePipe>::create();
        multiplexer = QSharedPointer<zel::ListApiMultiplexer>::create(pipe);
        adapter = QSharedPointer<CountingAdapter>::create();
        list = List::create(multiplexer, adapter, u"notes"_s, QString());
        mirror = std::make_unique<iface::ListMirror<Note>>(Handle(list));
    }

    void cleanup()
    {
        mirror.reset();
        list.reset();
        FakeClock::uninstall();
    }

    void asksForTheListInALaterTurn()
    {
        QVERIFY(pipe->expectNothingSent());
        const auto named = List::create(multiplexer, adapter, u"notes"_s, u"x"_s);
        QTRY_COMPARE(pipe->sentCount(), 2);
        QVERIFY(pipe->expectSentText(R"({"requestListAll":{"type":"notes"}})"));
        QVERIFY(pipe->expectSentText(R"({"requestListAll":{"type":"notes","id":"x"}})"));
    }

    void goesBeforeItsRequestDoes()
    {
        cleanup();
        turn();
        pipe->setConnected(false);
        pipe->setConnected(true);
        turn();
        QVERIFY(pipe->expectNothingSent());
    }

    void asksAgainAfterAReconnectionAndKeepsItsItems()
    {
        load({u"a"_s});
        turn();
        pipe->clearSent();
        pipe->inject(listMessage("listAll", {}));
        pipe->setConnected(false);
        clock->advance(60 * 1000);
        turn();
        pipe->setConnected(true);
        QVERIFY(pipe->expectNothingSent());
        QTRY_COMPARE(pipe->sentCount(), 1);
        QVERIFY(pipe->expectSentText(R"({"requestListAll":{"type":"notes"}})"));
        pipe->inject(listMessage("listChunk", {}, {{u"last"_s, true}})); // the rest of what was cut
        QCOMPARE(ids(), QStringList(u"a"_s));
        QCOMPARE(mirror->take(), QStringList(u"reset"_s));
    }

    void repeatsARequestUntilItsAnswerHasCome()
    {
        QTRY_COMPARE(pipe->sentCount(), 1);
        clock->advance(30 * 1000);
        QCOMPARE(pipe->sentCount(), 2);
        pipe->inject(listMessage("listAll", {}));
        for (int i = 0; i < 10; ++i) {
            pipe->inject(listMessage("listChunk", {noteJson(QString::number(i), QString())}));
            clock->advance(29 * 1000);
        }
        QCOMPARE(pipe->sentCount(), 2);
        clock->advance(1000); // the last chunk was lost
        QCOMPARE(pipe->sentCount(), 3);
        load({});
        clock->advance(3600 * 1000);
        QCOMPARE(pipe->sentCount(), 3);

        pipe->inject(listMessage("listAll", {})); // unasked, and no more comes
        clock->advance(30 * 1000);
        QCOMPARE(pipe->sentCount(), 4);
        load({});
        clock->advance(3600 * 1000);
        QCOMPARE(pipe->sentCount(), 4);
    }

    void announcesAnEqualListOnlyTheFirstTime()
    {
        load({});
        QCOMPARE(mirror->plainChanges(), 1);
        load({});
        QCOMPARE(mirror->plainChanges(), 1);
        load({u"a"_s});
        load({u"a"_s});
        QCOMPARE(mirror->plainChanges(), 2);
        QCOMPARE(mirror->take(), QStringList(u"reset"_s));
    }

    void isIncompleteUntilItsFirstWholeList()
    {
        QList<bool> seen;
        iface::ObservableMonitor monitor([&] { seen.append(list->isIncomplete()); }, nullptr, u"complete"_s, true);
        QTRY_COMPARE(seen, QList<bool>{true});
        pipe->inject(listMessage("listAdd", {noteJson(u"a"_s, u"a"_s)}));
        pipe->inject(listMessage("listChunk", {}, {{u"last"_s, true}}));
        QVERIFY(list->isIncomplete());
        load({u"a"_s});
        QCOMPARE(seen.last(), false);
    }

    void logsUpdatesOfUnknownItems()
    {
        const auto text = [](const char* line) {
            return QRegularExpression(u"LiveList.*List notes/Ignored attempt to update nonexistent element:"_s +
                                      QLatin1String(line));
        };
        pipe->inject(listMessage("listElements", {}));
        QTest::ignoreMessage(QtDebugMsg, text(" x$"));
        pipe->inject(listMessage("listChunk", {noteJson(u"x"_s, u"?"_s)}, {{u"last"_s, true}}));
        QTest::ignoreMessage(QtDebugMsg, text("  x$"));
        pipe->inject(listMessage("listChange", {noteJson(u"x"_s, QString())}));
    }

    void callsBackOnceForACookie()
    {
        QList<QStringList> calls;
        const auto call = [&](const QList<QString>& keys) { calls.append(QStringList(keys)); };
        list->addCookieCallback(u"c"_s, call);
        list->addCookieCallback(u"c"_s, call);
        list->addCookieCallback(u"other"_s, call);
        pipe->inject(listMessage("listAdd", {noteJson(u"x"_s, QString())}));
        QVERIFY(calls.isEmpty());
        const QByteArray message =
            listMessage("listAdd", {noteJson(u"a"_s, QString()), noteJson(u"b"_s, QString())}, {{u"cookie"_s, u"c"_s}});
        pipe->inject(message);
        pipe->inject(message);
        QCOMPARE(calls, QList<QStringList>({{u"a"_s, u"b"_s}, {u"a"_s, u"b"_s}}));

        list->addCookieCallback(u"d"_s, [&](const auto&) { list->addCookieCallback(u"d"_s, call); });
        list->notifyAndClearCookie(u"d"_s, {});
        QCOMPARE(calls.size(), 2);
        list->notifyAndClearCookie(u"d"_s, {});
        QCOMPARE(calls.size(), 3);
    }

    void rebuildsNoIndexForWhatDidNotShift()
    {
        QStringList many;
        for (int i = 0; i < 1000; ++i)
            many.append(QString::number(i));
        load(many);
        QCOMPARE(list->locateItem(u"500"_s), 500);
        adapter->keysTaken = 0;
        QJsonArray gone;
        for (int i = 0; i < 1000; i += 4)
            gone.append(noteJson(QString::number(i), QString()));
        pipe->inject(listMessage("listRemove", gone));
        QCOMPARE(list->locateItem(u"999"_s), 749);
        QCOMPARE(list->locateItem(u"501"_s), 375);
        QCOMPARE(adapter->keysTaken, 0);
    }

    void keepsTheOrderOfNestedMessages()
    {
        const auto second = List::create(multiplexer, adapter, u"notes"_s, QString());
        load({u"a"_s});
        bool nested = false;
        connect(list.data(), &iface::ObservableListImpl::itemAdded, this, [&] {
            if (!std::exchange(nested, true)) {
                pipe->inject(listMessage("listRemove", {noteJson(u"c"_s, QString()), noteJson(u"a"_s, QString())}));
                QCOMPARE(ids(), QStringList(u"b"_s));
            }
        });
        pipe->inject(listMessage("listAdd", {noteJson(u"b"_s, QString()), noteJson(u"c"_s, QString())}));
        QCOMPARE(mirror->take(), QStringList({u"reset"_s, u"added 1"_s, u"added 2"_s, u"removed 2"_s, u"removed 0"_s}));
        QCOMPARE(Handle(second).toList(), Handle(list).toList());
    }

    void mayBeDroppedWhileItAnnounces()
    {
        mirror.reset();
        int added = 0;
        connect(list.data(), &iface::ObservableListImpl::itemAdded, this, [&] {
            ++added;
            list.reset();
        });
        pipe->inject(listMessage("listAdd", {noteJson(u"a"_s, QString()), noteJson(u"b"_s, QString())}));
        pipe->inject(listMessage("listAdd", {noteJson(u"c"_s, QString())}));
        QCOMPARE(added, 2);
    }

    void isReachedByNothingOnceItDies()
    {
        mirror.reset();
        load({u"a"_s});
        turn();
        pipe->inject(listMessage("listAll", {}));
        pipe->clearSent();
        connect(list.data(), &QObject::destroyed, this, [&] {
            load({u"b"_s});
            pipe->setConnected(false);
            pipe->setConnected(true);
            clock->advance(60 * 1000);
            turn();
        });
        list.reset();
        QVERIFY(pipe->expectNothingSent());
    }

    void appliesAMessageWholeBeforeAnExceptionGoesOn()
    {
        load({u"a"_s, u"b"_s, u"c"_s});
        int called = 0;
        const auto throws = [&] {
            ++called;
            throw std::runtime_error("handler");
        };
        connect(list.data(), &iface::ObservableListImpl::itemRemoved, this, throws);
        connect(list.data(), &iface::ObservableListImpl::itemAdded, this, throws);
        list->addCookieCallback(u"d"_s, [&](const QList<QString>&) { throws(); });
        list->addCookieCallback(u"d"_s, [&](const QList<QString>& keys) { called += int(keys.size()); });
        const QJsonArray both{noteJson(u"a"_s, QString()), noteJson(u"b"_s, QString())};
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, pipe->inject(listMessage("listRemove", both)));
        QCOMPARE(ids(), QStringList(u"c"_s));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                                 pipe->inject(listMessage("listAdd", both, {{u"cookie"_s, u"d"_s}})));
        QCOMPARE(ids(), QStringList({u"c"_s, u"a"_s, u"b"_s}));
        QCOMPARE(called, 2 + 2 + 1 + 2);
    }

    void leavesOutWhatIsNoDistinctKey()
    {
        list = List::create(multiplexer, adapter, u"notes"_s, QString(), List::Keys::Distinct);
        mirror = std::make_unique<iface::ListMirror<Note>>(Handle(list));
        load({u"a"_s, QString(), u"b"_s, u"a"_s});
        QCOMPARE(ids(), QStringList({u"a"_s, u"b"_s}));
        load({u"a"_s, u"b"_s, u"b"_s});
        pipe->inject(listMessage("listAdd", {noteJson(QString(), QString()), noteJson(u"b"_s, u"b"_s)}));
        QCOMPARE(ids(), QStringList({u"a"_s, u"b"_s}));
        QCOMPARE(mirror->take(), QStringList(u"reset"_s));
    }

    void equalsAModelUnderRandomMessages()
    {
        iface::setLogLevel(iface::LogLevel::Type(3)); // unknown keys are ordinary here
        QRandomGenerator random = seededRandom();
        Model model;
        const char* const names[] = {"listAll", "listElements", "listChunk",  "listChunk",  "listChunk", "listAdd",
                                     "listAdd", "listChange",   "listChange", "listRemove", "listWindow"};
        for (int round = 0; round < 5000; ++round) {
            const char* const name = names[random.bounded(int(std::size(names)))];
            QJsonArray elements;
            for (int i = 0, n = random.bounded(8); i < n; ++i)
                elements.append(randomElement(random));
            const bool last = random.bounded(3) == 0;
            const QByteArray message =
                listMessage(name, elements, last ? QJsonObject{{u"last"_s, true}} : QJsonObject());
            for (int i = random.bounded(10) == 0 ? 2 : 1; i > 0; --i) { // some come twice
                pipe->inject(message);
                model.apply(name, elements, last);
            }
            const auto where = qPrintable(u"round %1, %2"_s.arg(round).arg(QLatin1String(message)));
            QVERIFY2(Handle(list).toList() == model.items, where);
            QVERIFY2(mirror->complaint().isEmpty() && mirror->items() == model.items, where);
            QVERIFY2(mirror->take() == std::exchange(model.announced, {}), where);
            const QString key = QString::number(random.bounded(40));
            QVERIFY2(list->locateItem(key) == model.find(key), where);
        }
        iface::setLogLevel(iface::LogLevel::Info);
    }

private:
    /// Loads a whole list of notes, with their ids for texts, in one chunk.
    void load(const QStringList& wanted)
    {
        QJsonArray elements;
        for (const QString& id : wanted)
            elements.append(noteJson(id, id));
        pipe->inject(listMessage("listAll", {}));
        pipe->inject(listMessage("listChunk", elements, {{u"last"_s, true}}));
    }

    QStringList ids() const
    {
        QStringList result;
        for (const Note& note : Handle(list).toList())
            result.append(note.id);
        return result;
    }

    void turn() { QCoreApplication::processEvents(); }

    QSharedPointer<FakeClock> clock;
    QSharedPointer<FakePipe> pipe;
    QSharedPointer<zel::ListApiMultiplexer> multiplexer;
    QSharedPointer<CountingAdapter> adapter;
    List::Pointer list;
    std::unique_ptr<iface::ListMirror<Note>> mirror;
};

QTEST_GUILESS_MAIN(TstLiveList)
#include "tst_livelist.moc"
