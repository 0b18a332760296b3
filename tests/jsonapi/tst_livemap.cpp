// SPDX-License-Identifier: Apache-2.0
#include "MapWeather.h"

#include <common/TestMain.h>

#include <list>

class TstLiveMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { FakeClock::uninstall(); }

    void asksOnceForAllKeysOfATurn()
    {
        MapFixture f;
        const auto b = f.get(u"b"_s);
        QCOMPARE(f.map->contents(u"a"_s), Note());
        QVERIFY(f.get(u"b"_s) == b);
        QCOMPARE(f.pipe->sentCount(), 0);
        turn();
        const QByteArray cookie = QByteArray::number(qint32(quintptr(f.map.data())));
        f.map->requestListElements({u"k"_s}, QString());
        QCOMPARE(f.pipe->takeSent(), R"({"requestListElements":{"cookie":")" + cookie +
                                         R"(","elements":[{"id":"b"},{"id":"a"}],"type":"notes"}})");
        QCOMPARE(f.pipe->takeSent(), R"({"requestListElements":{"elements":[{"id":"k"}],"type":"notes"}})");
    }

    // And tells everybody, whoever throws. What the answer leaves out is settled by its end alone.
    void announcesEachValueAndThenItsKey()
    {
        MapFixture f;
        QStringList heard;
        std::list<iface::ObserverFunctorAdapter> observers;
        for (const QString& key : {u"missing"_s, u"a"_s}) {
            const auto value = f.get(key);
            const auto* const loaded = static_cast<iface::LazyLoaderValue<QString, Note>*>(value.impl());
            value.impl()->addObserver(&observers.emplace_back([&heard, key, loaded] {
                heard.append(u"%1 %2 %3"_s.arg(key, loaded->getValue().text).arg(loaded->state()));
                throw std::runtime_error("slot");
            }));
        }
        connect(f.map.data(), &MapFixture::Map::mapChanged, this, [&](const iface::MapChange& change) {
            // One key at a time: "b" is still as it was when "a" is announced.
            heard.append(u"key %1 %2"_s.arg(change.keys<QString>().value(0), f.get(u"b"_s).getValue().text));
        });
        turn();
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, f.answer({u"a"_s, u"b"_s}));
        QCOMPARE(heard.join(u", "), u"a text of a 2, key a , key b text of b, missing  1, a text of a 1"_s);
    }

    // And within no other request, however many there are for a service that answers at once.
    void asksForMoreBeforeItStoresAnAnswer()
    {
        MapFixture f;
        const QStringList keys = f.getMany(45);
        turn();
        QList<int> sentWhenStored;
        connect(f.map.data(), &MapFixture::Map::mapChanged, this, [&] { sentWhenStored.append(f.pipe->sentCount()); });
        f.header(f.map->cookie());
        f.chunk(keys.mid(0, 10), false);
        f.chunk(keys.mid(10, 10));
        QCOMPARE(sentWhenStored, QList<int>(10, 1) + QList<int>(10, 2));
        f.answer(keys.mid(20, 20)); // which leaves too few to fill a request
        QCOMPARE(f.pipe->sentCount(), 2);
        turn();
        QCOMPARE(f.pipe->sentCount(), 3);

        const QString last = f.getMany(200).last();
        int depth = 0;
        f.pipe->sending = [&] {
            QCOMPARE(++depth, 1);
            f.answer(f.pipe->takeSentInWords().last().split(u' ').mid(1, 20));
            --depth;
        };
        f.answer(keys.mid(40));
        QTRY_VERIFY(f.map->isLoaded(last));
    }

    void asksInTurnsForWhatManyAnswersLeftOut()
    {
        const auto clock = FakeClock::install();
        MapFixture f;
        f.getMany(1000);
        turn();
        for (int answers = 0; answers < 1000 / 20; ++answers)
            f.answer({});
        f.pipe->clearSent();
        clock->advance(10 * 60 * 1000);
        QSet<QString> asked;
        for (const QString& request : f.pipe->takeSentInWords()) {
            const QStringList words = request.split(u' ').mid(1);
            QVERIFY(words.size() <= 401); // and the list's name
            asked.unite(QSet<QString>(words.begin(), words.end()));
        }
        QCOMPARE(asked.size(), 1001);
    }

    void endsTheRequestThatAnAnswerIsTo_data()
    {
        QTest::addColumn<QString>("script");
        const auto row = [](const char* name, const char* script) {
            QTest::newRow(name) << QString::fromLatin1(script);
        };
        row("twice", "ask a; answer a; ask b; answer a; b is missing; answer b; b is there; wait; sent 2");
        row("lost after a late one", "ask a; wait; answer a; ask b; answer a; wait; sent 4; answer b; b is there");
        row("in parts", "ask a b; begin; part a; a is there; b is missing; wait; sent 2; end b; b is there; "
                        "ask c; begin; end b; c is missing");
        row("without an end", "ask a; begin; part a; wait; ask b; end; b is missing; answer b; b is there; sent 2");
        row("somebody else's", "ask a b; begin another; end; a is missing; end a; b is missing; answer; b is there");
        row("a change of what has not come", "ask a; change a c; a is missing; c is missing; answer; a is there");
        row("empty, after a reconnection",
            "ask a; answer a; reconnect; ask b; answer; b is missing; answer; b is there");
        row("to a reconnection", "ask a; answer a; reconnect; ask b; answer a; b is missing; wait; sent 4; answer b; "
                                 "b is there; wait; sent 4");
        row("and so to a reconnection, too", "ask a; answer a; reconnect; ask b; answer b; b is there; wait; sent 3");
        row("to a reconnection that asked for what waited",
            "ask a; ask b; reconnect; asked a b; ask c; answer a; sent 3; answer a b; b is there; sent 4; "
            "c is missing; answer a b; c is missing; answer c; c is there");
        row("lost with the connection",
            "ask a; reconnect; sent 2; wait; sent 3; answer a; a is there; ask b; answer b; b is there");
        row("awaited of nobody", "ask a; disconnect; wait; sent 1");
        row("in part", "ask a b c; answer b; a is there; sent 1; wait; sent 2; answer a c; wait; wait; sent 2");
        row("in part, and the rest is not there", "ask a b; answer b; wait; asked a; answer; wait; wait; sent 2");
        row("in part, and the rest changes",
            "ask a b; answer b; change a; wait; asked a; answer a; wait; wait; sent 2");
        row("needless", "ask a b; add a; ask c; sent 1; add b; asked c; answer a b; c is missing; answer c; "
                        "c is there; wait; sent 2");
        row("under way, and needless", "ask a; begin; add a; ask b; sent 1; end a; asked b");
        row("needless, after a reconnection", "ask a; answer a; reconnect; ask b; add b; wait; asked a");
        row("empty, and at its end once more", "ask a; answer; ask b; end; b is missing; answer b; b is there");
        row("with others", "ask a b; answer c; a is missing; answer a; b is there; answer c; wait; asked b");
        row("in part, as is the next",
            "ask a b; answer a; wait; asked b; ask c d; answer c; wait; sent 3; wait; asked b d");
        row("cut", "ask a; begin; reconnect; end; a is missing; answer; a is there");
        row("a reconnection without keys", "reconnect; ask a; sent 2; answer; a is missing; answer a; a is there");
        row("with the map's end in the request", "drop 1; ask a; wait; wait; sent 1");
        row("with the map's end in its repetition", "drop 2; ask a; wait; wait; sent 2");
    }

    void endsTheRequestThatAnAnswerIsTo()
    {
        QFETCH(QString, script);
        const auto clock = FakeClock::install();
        MapFixture f;
        QStringList sent;
        for (const QString& line : script.split(u"; "_s)) {
            QStringList words = line.split(u' ');
            const QString first = words.takeFirst();
            sent += f.pipe->takeSentInWords();
            if (first == u"ask") {
                for (const QString& key : words)
                    f.get(key);
            } else if (first == u"drop") { // with that request
                f.pipe->sending = [&f, left = words.first().toInt()]() mutable {
                    if (--left == 0)
                        f.map.reset();
                };
            } else if (first == u"wait") {
                clock->advance(30000);
            } else if (first == u"reconnect" || first == u"disconnect") {
                f.pipe->setConnected(false);
                f.pipe->setConnected(first == u"reconnect");
            } else if (first == u"begin" || first == u"answer") {
                f.header(first == u"begin" ? words.value(0, f.map->cookie()) : f.map->cookie());
            } else if (first == u"add" || first == u"change") {
                for (const QString& key : words)
                    f.pipe->inject(listMessage(first == u"add" ? "listAdd" : "listChange", {noteJson(key, first)}));
            } else if (first == u"sent") {
                QVERIFY2(sent.size() == words.first().toInt(), qPrintable(line));
            } else if (first == u"asked") {
                QStringList asked = sent.last().split(u' ').mid(1);
                asked.sort();
                QCOMPARE(asked, words << u"notes"_s);
            } else if (words.value(0) == u"is") {
                QVERIFY2(f.map->isLoaded(first) == line.endsWith(u"is there"_s), qPrintable(line));
            }
            if (first == u"part" || first == u"end" || first == u"answer")
                f.chunk(words, first != u"part");
            turn();
        }
        QVERIFY(f.map || clock->waiting() == 0);
    }

    void bringsEverythingThroughAnyWeather()
    {
        QRandomGenerator random = seededRandom();
        for (int i = 0; i < 100; ++i) {
            const QString complaint = MapWeather(Choices(random.generate())).run(300);
            QVERIFY2(complaint.isEmpty(), qPrintable(u"%1 (run %2)"_s.arg(complaint).arg(i)));
        }
    }

    // Every allocation of a step fails in turn, each time in the same weather. What was asked for comes all the same,
    // and what was news with the next connection.
    void bringsEverythingAlsoWithoutMemory()
    {
        failing::withArrays = false;
        QRandomGenerator random = seededRandom();
        for (int i = 0; i < 20 && !QTest::currentTestFailed(); ++i) {
            const quint32 seed = random.generate();
            failing::eachInTurn([seed] { return std::make_unique<MapWeather>(Choices(seed), 20); },
                                [i](MapWeather& weather) { weather.goWithoutMemory(i % 5); },
                                [](MapWeather& weather) { QCOMPARE(weather.end(), QString()); });
        }
    }
};

ZEL_TEST(TstLiveMap)
#include "tst_livemap.moc"
