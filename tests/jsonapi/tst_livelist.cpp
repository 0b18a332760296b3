// SPDX-License-Identifier: Apache-2.0
#include "ListModel.h"

#include <common/FailingAllocations.h>
#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <common/Random.h>
#include <common/TestMain.h>
#include <iface/ListMirror.h>
#include <iface/Logging.h>
#include <iface/ObservableList.h>
#include <iface/ObservableMonitor.h>
#include <zel/LiveList.h>

using List = zel::LiveList<Note>;
using Handle = iface::ObservableList<Note, List>;

/// What lists do when handlers act on what they announce is tested with the order of messages.
class TstLiveList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        clock = FakeClock::install();
        pipe = QSharedPointer<FakePipe>::create();
        multiplexer = QSharedPointer<zel::ListApiMultiplexer>::create(pipe);
        adapter = QSharedPointer<NoteAdapter>::create();
        list = List::create(multiplexer, adapter, u"notes"_s, QString());
    }

    void cleanup()
    {
        list.reset();
        FakeClock::uninstall();
    }

    void asksForTheListUntilItHasCome()
    {
        auto named = List::create(multiplexer, adapter, u"notes"_s, u"x"_s);
        QCOMPARE(pipe->sentCount(), 0);
        turn();
        QCOMPARE(pipe->takeSent(), R"({"requestListAll":{"type":"notes"}})"_ba);
        QCOMPARE(pipe->takeSent(), R"({"requestListAll":{"type":"notes","id":"x"}})"_ba);
        named.reset();

        for (const int seconds : {30, 60, 120, 240, 300, 300}) { // as with everything that is asked for
            pipe->clearSent();
            clock->advance(seconds * 1000 - 1);
            QCOMPARE(pipe->sentCount(), 0);
            clock->advance(1);
            QCOMPARE(pipe->sentCount(), 1);
        }
        pipe->inject(listMessage("listAll", {}));
        for (int i = 0; i < 10; ++i) {
            pipe->inject(listMessage("listChunk", {noteJson(QString::number(i), QString())}));
            clock->advance(29 * 1000);
        }
        QCOMPARE(pipe->sentCount(), 1);
        clock->advance(1000); // the last chunk was lost
        QCOMPARE(pipe->sentCount(), 2);
        load({u"a"_s});
        clock->advance(3600 * 1000);
        QCOMPARE(pipe->sentCount(), 2);
        pipe->inject(listMessage("listAll", {})); // unasked, and no more comes
        clock->advance(30 * 1000);
        QCOMPARE(pipe->sentCount(), 3);
        // What was cut does not go on after a reconnection, and the items stay.
        pipe->setConnected(false);
        clock->advance(60 * 1000);
        pipe->setConnected(true);
        QCOMPARE(pipe->sentCount(), 3);
        turn();
        QCOMPARE(pipe->sentCount(), 4);
        pipe->inject(listMessage("listChunk", {}, {{u"last"_s, true}}));
        QCOMPARE(Handle(list).size(), 1);
    }

    void isIncompleteUntilItsFirstWholeList()
    {
        QList<bool> seen;
        iface::ObservableMonitor monitor([&] { seen.append(list->isIncomplete()); }, nullptr, u"complete"_s, true);
        QList<int> places;
        iface::ObservableMonitor follower([&] { places.append(list->locateItem(u"a"_s)); }, nullptr, u"place"_s, true);
        QTRY_COMPARE(seen, QList<bool>{true});
        pipe->inject(listMessage("listElements", {}));
        pipe->inject(listMessage("listChunk", {}, {{u"last"_s, true}}));
        QVERIFY(list->isIncomplete());
        load({}); // is announced, though it changes nothing
        load({});
        QCOMPARE(seen, QList<bool>({true, false}));
        load({u"b"_s, u"a"_s});
        QCOMPARE(places.last(), 1);
    }

    void logsUpdatesOfUnknownItems()
    {
        pipe->inject(listMessage("listElements", {}));
        for (const auto& [message, end] : {std::pair("listChunk", " x$"), std::pair("listChange", "  x$")}) {
            const QString line = u"LiveList.*List notes/Ignored attempt to update nonexistent element:"_s;
            QTest::ignoreMessage(QtDebugMsg, QRegularExpression(line + QLatin1String(end)));
            pipe->inject(listMessage(message, {noteJson(u"x"_s, u"?"_s)}, {{u"last"_s, true}}));
        }
    }

    void callsBackOnceForACookie()
    {
        QStringList calls;
        const auto call = [&](const QStringList& keys) { calls.append(keys.join(u'+')); };
        list->addCookieCallback(u"c"_s, [&](const QStringList& keys) {
            list->addCookieCallback(u"c"_s, call); // for the next answer
            call(keys);
        });
        list->addCookieCallback(u"c"_s, call);
        const QJsonArray both{noteJson(u"a"_s, QString()), noteJson(u"b"_s, QString())};
        for (const QString& row : {u":"_s, u"other:"_s, u"c:a+b a+b"_s, u"c:a+b"_s, u"c:"_s}) {
            pipe->inject(listMessage("listAdd", both, {{u"cookie"_s, row.section(u':', 0, 0)}}));
            QCOMPARE(std::exchange(calls, {}).join(u' '), row.section(u':', 1));
        }
    }

    void isOneOfTwoStatesWithoutMemory()
    {
        failing::withArrays = false;
        const auto prepare = [this] {
            init();
            turn();
            pipe->clearSent();
            return this;
        };
        const QByteArrayList messages{
            listMessage("listAll", {}),
            listMessage("listChunk", {noteJson(u"a"_s, u"a"_s), noteJson(u"b"_s, u"b"_s)}),
            listMessage("listChunk", {noteJson(u"c"_s, u"c"_s)}, {{u"last"_s, true}}),
            listMessage("listChange", {QJsonObject{{u"id"_s, u"b"_s}, {u"renamed"_s, u"e"_s}}}),
            listMessage("listRemove", {noteJson(u"a"_s, {})}),
            listMessage("listAdd", {noteJson(u"f"_s, u"f"_s)}),
        };
        const auto act = [&](TstLiveList&) {
            for (const QByteArray& message : messages) {
                failing::withMalloc = !message.contains("listChunk"); // Qt gives back memory without looking for new
                pipe->inject(message);
            }
        };
        const auto check = [&](TstLiveList&) {
            for (int i = 0; i < list->childCount({}); ++i)
                QCOMPARE(list->locateItem(Handle(list)[i].id), i);
            QVERIFY(list->isIncomplete() ? list->childCount({}) == 0 : list->childCount({}) >= 2);
            clock->advance(30 * 1000);
            QCOMPARE(pipe->sentCount(), int(list->isIncomplete()));
            load({u"x"_s, u"a"_s});
            QCOMPARE(list->childCount({}), 2);
        };
        QVERIFY(failing::eachInTurn(prepare, act, check) > 0);
    }

    void rebuildsNoIndexForWhatDidNotShift()
    {
        QStringList many;
        for (int i = 0; i < 1000; ++i)
            many.append(QString::number(i));
        load(many);
        QCOMPARE(list->locateItem(u"500"_s), 500);
        adapter->keysTaken = 0;
        pipe->inject(listMessage("listRemove", {noteJson(u"0"_s, {}), noteJson(u"500"_s, {})}));
        QCOMPARE(list->locateItem(u"999"_s), 997);
        QCOMPARE(adapter->keysTaken, 0);
    }

    void equalsAModelUnderRandomMessages()
    {
        iface::setLogLevel(iface::LogLevel::Type(3)); // unknown keys are ordinary here
        QRandomGenerator random = seededRandom();
        for (const auto keys : {List::Keys::AsTheyCome, List::Keys::Distinct}) {
            ListModel model;
            model.keys = keys;
            list = List::create(multiplexer, adapter, u"notes"_s, QString(), keys);
            iface::ListMirror<Note> mirror{Handle(list)};
            // For long times no list is sent anew, and the places of what has gone add up.
            const char* const names[] = {"listAdd",    "listAdd",    "listChange", "listRemove",
                                         "listRemove", "listWindow", "listAll",    "listElements",
                                         "listChunk",  "listChunk",  "listChunk",  "listChunk"};
            for (int round = 0; round < 4000; ++round) {
                const char* const name = names[random.bounded(round / 200 % 2 ? 6 : int(std::size(names)))];
                QJsonArray elements;
                for (int i = 0, n = random.bounded(8); i < n; ++i)
                    elements.append(randomElement(random));
                const bool last = random.bounded(3) == 0;
                const QByteArray message = listMessage(name, elements, {{u"last"_s, last}});
                for (int i = random.bounded(10) == 0 ? 2 : 1; i > 0; --i) { // some come twice
                    pipe->inject(message);
                    model.apply(name, elements, last);
                }
                const auto where = qPrintable(u"round %1, %2"_s.arg(round).arg(QLatin1String(message)));
                QVERIFY2(Handle(list).toList() == model.items, where);
                QVERIFY2(mirror.complaint().isEmpty() && mirror.items() == model.items, where);
                QVERIFY2(mirror.take() == std::exchange(model.announced, {}), where);
                const QString key = QString::number(random.bounded(15));
                QVERIFY2(list->locateItem(key) == model.find(key), where);
            }
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

    QSharedPointer<FakeClock> clock;
    QSharedPointer<FakePipe> pipe;
    QSharedPointer<zel::ListApiMultiplexer> multiplexer;
    QSharedPointer<NoteAdapter> adapter;
    List::Pointer list;
};

ZEL_TEST(TstLiveList)
#include "tst_livelist.moc"
