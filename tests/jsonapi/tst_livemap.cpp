// SPDX-License-Identifier: Apache-2.0
#include "Note.h"

#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <common/SeededRandom.h>
#include <common/TestMain.h>
#include <iface/ObserverFunctorAdapter.h>
#include <zel/LiveMap.h>

#include <QtCore/QMultiMap>
#include <QtCore/QScopedValueRollback>

#include <array>
#include <map>
#include <memory>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

using Map = zel::LiveMap<QString, Note>;
using Value = iface::ObservableValue<Note>;

/// A map on the notes, and a service that answers when the test says so.
struct Fixture
{
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    Map::Pointer map = Map::create(QSharedPointer<zel::ListApiMultiplexer>::create(pipe),
                                   QSharedPointer<NoteAdapter>::create(), u"notes"_s, QString());

    Value get(const QString& key) const { return map->doGet(key); }
    void get(const QStringList& keys) const
    {
        for (const QString& key : keys)
            get(key);
    }
    QStringList getMany(int count) const
    {
        QStringList keys;
        for (int i = 0; i < count; ++i)
            keys.append(QString::number(i));
        get(keys);
        return keys;
    }

    void header(const QString& cookie) { pipe->inject(listMessage("listElements", {}, {{u"cookie"_s, cookie}})); }
    void chunk(const QStringList& keys, bool last = true)
    {
        QJsonArray elements;
        for (const QString& key : keys)
            elements.append(noteJson(key, u"text of "_s + key));
        pipe->inject(listMessage("listChunk", elements, {{u"last"_s, last}}));
    }
    void answer(const QStringList& keys)
    {
        header(map->cookie());
        chunk(keys);
    }
};

/// A service that is slow or quick, forgets to answer and answers twice, and an application whose slots throw and spin
/// event loops, which asks for notes at random. Everything that the map announces is looked at.
class Weather
{
public:
    explicit Weather(quint32 seed)
        : m_random(seed)
    {
        for (int i = m_random.bounded(120); i >= 0; --i)
            m_notes.insert(QString::number(i), {QString::number(i), u"first"_s, i});
        QObject::connect(f.map.data(), &Map::mapChanged, &m_context,
                         [this](const iface::MapChange& change) { changed(change.keys<QString>()); });
        f.pipe->sending = [this] {
            if (!m_isCalm && m_random.bounded(10) == 0) {
                collect(0);
                deliver();
            }
        };
    }
    ~Weather()
    {
        f.map.reset();
        FakeClock::uninstall();
    }

    QString run(int steps)
    {
        for (int i = 0; i < steps; ++i)
            guarded([this] { step(); });
        m_isCalm = true;
        // A request that was lost goes out again after five minutes at most, and then there is nothing more to be done.
        for (int rounds = 0; !isAtRest(); ++rounds) {
            if (rounds > 30)
                return u"never comes to rest"_s;
            pass(5 * 60 * 1000);
            deliver();
        }
        for (const QString& key : std::as_const(m_asked)) {
            const Note note = f.map->contents(key);
            if (!f.map->isLoaded(key) || !(note == m_notes.value(key) && note == f.get(key).getValue()))
                return key + u" did not come"_s;
        }
        return m_complaint;
    }

private:
    struct Answer
    {
        QStringList keys;
        bool hasHeader;
        bool hasEnd;
    };

    template <class Step>
    void guarded(Step step)
    {
        try {
            step();
        } catch (const std::runtime_error&) {
        }
    }

    void complain(const QString& what)
    {
        if (m_complaint.isEmpty())
            m_complaint = what;
    }

    void step()
    {
        const int kind = m_random.bounded(8);
        if (kind == 0) {
            for (int i = m_random.bounded(40); i > 0; --i)
                ask(someKey());
        } else if (kind == 1) {
            pass(m_random.bounded(4) ? m_random.bounded(8000) : 31000); // the process may stand still
        } else if (kind == 2) {
            changeOne();
        } else if (kind == 3 && m_random.bounded(10) == 0) {
            reconnect();
        } else if (kind > 3) {
            turn();
        }
    }

    void turn()
    {
        QCoreApplication::sendPostedEvents();
        collect();
        deliver();
    }

    bool isAtRest()
    {
        QCoreApplication::sendPostedEvents();
        collect();
        return m_clock->waiting() == 0 && m_due.isEmpty();
    }

    void pass(int msecs)
    {
        for (; msecs > 0; msecs -= 1000) {
            m_clock->advance(1000);
            collect();
        }
    }

    QString someKey() { return std::next(m_notes.cbegin(), m_random.bounded(int(m_notes.size()))).key(); }

    void ask(const QString& key)
    {
        if (m_asked.contains(key))
            return;
        m_asked.insert(key);
        const Value value = f.get(key);
        Watch& watch = m_watches[key];
        watch.seen = value.getValue();
        watch.observer = std::make_unique<iface::ObserverFunctorAdapter>([this, value, &watch] {
            if (!(std::exchange(watch.seen, value.getValue()) == value.getValue()))
                return;
            if (std::exchange(watch.settled, true))
                complain(u"a value is announced twice"_s);
            misbehave();
        });
        value.impl()->addObserver(watch.observer.get());
    }

    void changed(const QList<QString>& keys)
    {
        const Note now = f.get(keys.value(0)).getValue();
        if (keys.size() != 1 || m_told.value(keys.first()) == now)
            complain(u"a key is announced without a change"_s);
        m_told.insert(keys.first(), now);
        misbehave();
    }

    void misbehave()
    {
        if (m_isCalm || m_depth > 3)
            return;
        const QScopedValueRollback deeper(m_depth, m_depth + 1);
        const int kind = m_random.bounded(40);
        if (kind == 0)
            throw std::runtime_error("slot");
        if (kind == 1)
            guarded([this] { step(); });
        if (kind == 2)
            pass(31000);
    }

    void changeOne()
    {
        const char* const name = std::array{"listChange", "listAdd", "listRemove", "listAll",
                                            "listWindow"}[std::size_t(m_random.bounded(5))];
        Note& note = m_notes[someKey()];
        const QString text = QString::number(m_random.bounded(1000));
        // Stars stay as they are in a change, and go back to none in a new record; a map takes nothing else, and
        // forgets nothing.
        if (name == "listChange"_ba || name == "listAdd"_ba)
            note = {note.id, text, name == "listChange"_ba ? note.stars : 0};
        f.pipe->inject(listMessage(name, {noteJson(note.id, text)}));
    }

    void reconnect()
    {
        f.pipe->setConnected(false);
        f.pipe->clearSent();
        m_due.clear();
        m_requestedAt.clear();
        const QScopedValueRollback reconnecting(m_isReconnecting, true);
        f.pipe->setConnected(true);
        collect();
        m_requestedAt.clear(); // also for what is still to be requested by itself
    }

    /// Reads what the map has sent, and works out when it is to be answered.
    void collect(int slowest = 90000)
    {
        for (const QString& request : f.pipe->takeSentInWords()) {
            QStringList keys = request.split(u' ').mid(1);
            keys.removeLast(); // the list's name
            lookAt(keys);
            const int kind = m_isCalm ? 9 : m_random.bounded(10);
            if (kind == 0)
                continue; // lost
            const Answer answer{keys, kind != 1, kind != 2};
            // Nothing tells what an answer without records is to; so it comes once, and before any other.
            if (keys.isEmpty()) {
                m_due.insert(0, answer);
                continue;
            }
            const int delay = m_isCalm || slowest == 0 ? 0 : m_random.bounded(m_random.bounded(3) ? 200 : slowest);
            for (int i = kind == 3 ? 2 : 1; i > 0; --i)
                m_due.insert(m_clock->now() + delay, answer);
        }
    }

    /// No key is requested twice within half a minute.
    void lookAt(const QStringList& keys)
    {
        for (const QString& key : keys) {
            const auto before = m_requestedAt.constFind(key);
            if (before != m_requestedAt.cend() && !m_isReconnecting && m_clock->now() - *before < 29000)
                complain(u"%1 is asked for again after %2 ms"_s.arg(key).arg(m_clock->now() - *before));
            m_requestedAt.insert(key, m_clock->now());
        }
    }

    /// Sends the answers that are due by now.
    void deliver()
    {
        while (!m_due.isEmpty() && m_due.firstKey() <= m_clock->now()) {
            const Answer answer = m_due.take(m_due.firstKey());
            const qsizetype half = m_random.bounded(2) ? answer.keys.size() : answer.keys.size() / 2;
            if (answer.hasHeader)
                guarded([this] { f.header(f.map->cookie()); });
            guarded([&] { send(answer.keys.mid(0, half), answer.hasEnd && half == answer.keys.size()); });
            if (half < answer.keys.size())
                guarded([&] { send(answer.keys.mid(half), answer.hasEnd); });
        }
    }

    void send(const QStringList& keys, bool last)
    {
        QJsonArray elements;
        for (const QString& key : keys) {
            QJsonObject element = noteJson(key, m_notes.value(key).text);
            element.insert(u"stars"_s, m_notes.value(key).stars);
            elements.append(element);
        }
        f.pipe->inject(listMessage("listChunk", elements, {{u"last"_s, last}}));
    }

    struct Watch
    {
        Note seen;
        bool settled = false;
        std::unique_ptr<iface::ObserverFunctorAdapter> observer;
    };

    const QSharedPointer<FakeClock> m_clock = FakeClock::install();
    Fixture f;
    QObject m_context;
    QRandomGenerator m_random;
    QMap<QString, Note> m_notes;
    QHash<QString, Note> m_told;
    QSet<QString> m_asked;
    std::map<QString, Watch> m_watches;
    QMultiMap<qint64, Answer> m_due;
    QHash<QString, qint64> m_requestedAt;
    QString m_complaint;
    int m_depth = 0;
    bool m_isCalm = false;
    bool m_isReconnecting = false;
};

} // namespace

class TstLiveMap : public QObject
{
    Q_OBJECT

    static void turn() { QCoreApplication::processEvents(); }

private Q_SLOTS:
    void cleanup() { FakeClock::uninstall(); }

    void asksOnceForAllKeysOfATurn()
    {
        Fixture f;
        const Value b = f.get(u"b"_s);
        QCOMPARE(f.map->contents(u"a"_s), Note());
        QVERIFY(f.get(u"b"_s) == b);
        QVERIFY(f.pipe->expectNothingSent());
        turn();
        const QByteArray cookie = QByteArray::number(qint32(quintptr(f.map.data())));
        QVERIFY(f.pipe->expectSentText(R"({"requestListElements":{"cookie":")" + cookie +
                                       R"(","elements":[{"id":"b"},{"id":"a"}],"type":"notes"}})"));
        const auto named = Map::create(QSharedPointer<zel::ListApiMultiplexer>::create(f.pipe),
                                       QSharedPointer<NoteAdapter>::create(), u"notes"_s, u"box"_s);
        named->requestListElements({u"k"_s}, QString());
        QVERIFY(
            f.pipe->expectSentText(R"({"requestListElements":{"elements":[{"id":"k"}],"type":"notes","id":"box"}})"));
    }

    // And tells everybody, whoever throws. What the answer leaves out is settled by its end alone.
    void announcesEachValueAndThenItsKey()
    {
        Fixture f;
        QStringList heard;
        std::vector<std::unique_ptr<iface::ObserverFunctorAdapter>> observers;
        for (const QString& key : {u"missing"_s, u"a"_s}) {
            const Value value = f.get(key);
            const auto* const loaded = static_cast<iface::LazyLoaderValue<QString, Note>*>(value.impl());
            QVERIFY(loaded->state() == 2 && !f.map->isLoaded(key));
            observers.push_back(std::make_unique<iface::ObserverFunctorAdapter>([&heard, key, loaded] {
                heard.append(u"%1 %2 %3"_s.arg(key, loaded->getValue().text).arg(loaded->state()));
                throw std::runtime_error("slot");
            }));
            value.impl()->addObserver(observers.back().get());
        }
        connect(f.map.data(), &Map::mapChanged, this, [&](const iface::MapChange& change) {
            // One key at a time: "b" is still as it was when "a" is announced.
            heard.append(u"key %1 %2"_s.arg(change.keys<QString>().value(0), f.get(u"b"_s).getValue().text));
        });
        turn();
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, f.answer({u"a"_s, u"b"_s}));
        QCOMPARE(heard.join(u", "), u"a text of a 2, key a , key b text of b, missing  1, a text of a 1"_s);
    }

    void asksForMoreBeforeItStoresAnAnswer()
    {
        Fixture f;
        const QStringList keys = f.getMany(45);
        turn();
        QList<int> sentWhenStored;
        connect(f.map.data(), &Map::mapChanged, this, [&] { sentWhenStored.append(f.pipe->sentCount()); });
        f.header(f.map->cookie());
        f.chunk(keys.mid(0, 10), false);
        f.chunk(keys.mid(10, 10));
        QCOMPARE(sentWhenStored, QList<int>(10, 1) + QList<int>(10, 2));
        f.answer(keys.mid(20, 20)); // which leaves too few to fill a request
        QCOMPARE(f.pipe->sentCount(), 2);
        turn();
        QCOMPARE(f.pipe->sentCount(), 3);
    }

    void asksInTurnsForWhatManyAnswersLeftOut()
    {
        const auto clock = FakeClock::install();
        Fixture f;
        const QStringList keys = f.getMany(1000);
        turn();
        for (int asked = 0; asked < keys.size(); asked += 20)
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

    void mayBeDroppedByARequestOrItsRepetition()
    {
        const auto clock = FakeClock::install();
        for (const int last : {1, 2}) {
            Fixture f;
            const Value value = f.get(u"a"_s);
            f.pipe->sending = [&] {
                if (f.pipe->sentCount() == last)
                    f.map.reset();
            };
            turn();
            clock->advance(60000);
            QVERIFY(!f.map);
            QCOMPARE(f.pipe->sentCount(), last);
            QCOMPARE(value.getValue(), Note());
            QCOMPARE(clock->waiting(), 0);
        }
    }

    void endsTheRequestThatAnAnswerIsTo_data()
    {
        QTest::addColumn<QString>("script");
        const auto row = [](const char* name, const char* script) {
            QTest::newRow(name) << QString::fromLatin1(script);
        };
        row("late", "ask a; wait; wait; answer a; a is there; ask b; answer a; b is missing; answer b; b is there");
        row("twice", "ask a; answer a; ask b; answer a; b is missing; answer b; b is there; wait; sent 2");
        row("lost after a late one", "ask a; wait; answer a; ask b; answer a; wait; sent 4; answer b; b is there");
        row("empty", "ask a; answer; a is there; ask b; b is missing; answer b; b is there");
        row("in parts", "ask a b; begin; part a; a is there; b is missing; wait; sent 2; end b; b is there; "
                        "ask c; begin; end b; c is missing");
        row("without an end", "ask a; begin; part a; wait; ask b; end; b is missing; answer b; b is there; sent 2");
        row("without a beginning", "ask a; end a; ask b; sent 1; wait; turn; sent 2; answer b; b is there");
        row("somebody else's", "ask a b; begin another; end; a is missing; end a; b is missing; answer; b is there");
        row("a change of what has not come", "ask a; change a c; a is missing; c is missing; answer; a is there");
        row("empty, after a reconnection",
            "ask a; answer a; reconnect; ask b; answer; b is missing; answer; b is there");
        row("to a reconnection", "ask a; answer a; reconnect; ask b; answer a; b is missing; wait; sent 4; answer b; "
                                 "b is there; wait; sent 4");
        row("and so to a reconnection, too", "ask a; answer a; reconnect; ask b; answer b; b is there; wait; sent 3");
        row("to a reconnection that asked for what waited",
            "ask a; ask b; reconnect; asked a b; ask c; answer a; turn; sent 3; answer a b; b is there; turn; sent 4; "
            "c is missing; answer a b; c is missing; answer c; c is there");
        row("to none after a reconnection", "ask a; answer a; reconnect; wait; sent 3; wait; wait; sent 4; answer a; "
                                            "wait; sent 4");
        row("lost with the connection", "ask a; reconnect; sent 2; answer a; a is there; ask b; answer b; b is there");
        row("awaited of nobody", "ask a; disconnect; wait; sent 1");
        row("lost again", "ask a; reconnect; wait; sent 3; answer a; a is there");
        row("in part", "ask a b c; answer b; a is there; sent 1; wait; sent 2; answer a c; wait; wait; sent 2");
        row("in part, and the rest is not there", "ask a b; answer b; wait; asked a; answer; wait; wait; sent 2");
        row("in part, and the rest is lost",
            "ask a b; answer b; wait; ask c; answer c; c is there; wait; wait; sent 4");
        row("in part, and the rest changes",
            "ask a b; answer b; change a; wait; asked a; answer a; wait; wait; sent 2");
        row("needless", "ask a b; add a; ask c; sent 1; add b; turn; asked c; answer a b; c is missing; answer c; "
                        "c is there; wait; sent 2");
        row("under way, and needless", "ask a; begin; add a; ask b; sent 1; end a; turn; asked b");
        row("needless, after a reconnection", "ask a; answer a; reconnect; ask b; add b; wait; asked a");
        row("cut", "ask a; begin; reconnect; end; a is missing; answer; a is there");
        row("a reconnection without keys", "reconnect; ask a; sent 2; answer; a is missing; answer a; a is there");
    }

    void endsTheRequestThatAnAnswerIsTo()
    {
        QFETCH(QString, script);
        const auto clock = FakeClock::install();
        Fixture f;
        const auto lastAsked = [&] {
            QStringList keys;
            const auto elements = QJsonDocument::fromJson(f.pipe->sent().last())[u"requestListElements"][u"elements"];
            for (const QJsonValue& element : elements.toArray())
                keys.append(element[u"id"].toString());
            keys.sort();
            return keys;
        };
        for (const QString& line : script.split(u"; "_s)) {
            QStringList words = line.split(u' ');
            const QString first = words.takeFirst();
            if (first == u"ask") {
                f.get(words);
                turn();
            } else if (first == u"wait") {
                clock->advance(30000);
            } else if (first == u"turn") {
                turn();
            } else if (first == u"reconnect" || first == u"disconnect") {
                f.pipe->setConnected(false);
                f.pipe->setConnected(first == u"reconnect");
            } else if (first == u"begin" || first == u"answer") {
                f.header(first == u"begin" ? words.value(0, f.map->cookie()) : f.map->cookie());
            } else if (first == u"add" || first == u"change") {
                for (const QString& key : words)
                    f.pipe->inject(listMessage(first == u"add" ? "listAdd" : "listChange", {noteJson(key, first)}));
            } else if (first == u"sent") {
                QVERIFY2(f.pipe->sentCount() == words.first().toInt(), qPrintable(line));
            } else if (first == u"asked") {
                QCOMPARE(lastAsked(), words);
            } else if (words.value(0) == u"is") {
                QVERIFY2(f.map->isLoaded(first) == line.endsWith(u"is there"_s), qPrintable(line));
            }
            if (first == u"part" || first == u"end" || first == u"answer")
                f.chunk(words, first != u"part");
        }
    }

    void bringsEverythingThroughAnyWeather()
    {
        QRandomGenerator random = seededRandom();
        for (int i = 0; i < 100; ++i) {
            const quint32 seed = random.generate();
            const QString complaint = Weather(seed).run(300);
            QVERIFY2(complaint.isEmpty(), qPrintable(u"%1 (run %2)"_s.arg(complaint).arg(i)));
        }
    }
};

ZEL_TEST(TstLiveMap)
#include "tst_livemap.moc"
