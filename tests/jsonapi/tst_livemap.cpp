// SPDX-License-Identifier: Apache-2.0
#include "Note.h"

#include <common/FakePipe.h>
#include <common/SeededRandom.h>
#include <iface/ObservableMap.h>
#include <iface/ObservableMapImplFunctorAdapter.h>
#include <iface/ObserverFunctorAdapter.h>
#include <zel/LiveMap.h>

#include <QTest>

#include <memory>
#include <stdexcept>

namespace {

using Map = zel::LiveMap<QString, Note>;
using Value = iface::ObservableValue<Note>;

} // namespace

class TstLiveMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void asksOnceForAllKeysOfATurn();
    void namesItsListByTypeAndId();
    void announcesTheValueAndThenItsKey();
    void settlesAnAnsweredRequestOnce();
    void asksForMoreBeforeItStoresAnAnswer();
    void asksAgainForWhatAHandlerKeptFromBeingStored();
    void changesOnlyWhatIsLoaded();
    void asksAgainForEverythingAfterAReconnection();
    void aReconnectionDoesNotDisturbTheRequestUnderWay();
    void keepsTheOrderOfNestedMessages();
    void mayBeDroppedWhileItAnnounces();
    void equalsAModelUnderRandomMessages();

private:
    Value get(const QString& key) const { return iface::ObservableMap<QString, Value, Map>(map).get(key); }
    QString text(const QString& key) const { return get(key).getValue().text; }
    QByteArray request(const QStringList& keys) const;
    void answer(const QStringList& keys, bool last = true);
    void turn() { QCoreApplication::processEvents(); }

    QSharedPointer<FakePipe> pipe;
    Map::Pointer map;
    std::unique_ptr<iface::ObservableMapImplFunctorAdapter> listener;
    QStringList changed;
};

void TstLiveMap::init()
{
    pipe = QSharedPointer<FakePipe>::create();
    map = Map::create(QSharedPointer<zel::ListApiMultiplexer>::create(pipe), QSharedPointer<NoteAdapter>::create(),
                      u"notes"_qs, QString());
    changed.clear();
    listener = std::make_unique<iface::ObservableMapImplFunctorAdapter>([this](const iface::MapChange& change) {
        const QList<QString> keys = change.keys<QString>();
        QCOMPARE(keys.size(), 1);
        changed += keys;
    });
    listener->startListening(map.data());
}

void TstLiveMap::cleanup()
{
    listener.reset();
    map.reset();
}

QByteArray TstLiveMap::request(const QStringList& keys) const
{
    QStringList elements;
    for (const QString& key : keys)
        elements.append(u"{\"id\":\"%1\"}"_qs.arg(key));
    return u"{\"requestListElements\":{\"cookie\":\"%1\",\"elements\":[%2],\"type\":\"notes\"}}"_qs
        .arg(map->cookie(), elements.join(u','))
        .toUtf8();
}

void TstLiveMap::answer(const QStringList& keys, bool last)
{
    QJsonArray elements;
    for (const QString& key : keys)
        elements.append(noteJson(key, u"text of "_qs + key));
    pipe->inject(listMessage("listElements", {}, {{u"cookie"_qs, map->cookie()}}));
    pipe->inject(listMessage("listChunk", elements, {{u"last"_qs, last}}));
}

void TstLiveMap::asksOnceForAllKeysOfATurn()
{
    const Value a = get(u"a"_qs);
    get(u"b"_qs);
    QVERIFY(get(u"a"_qs) == a);
    QTRY_COMPARE(pipe->sentCount(), 1);
    QVERIFY(pipe->expectSentText(request({u"a"_qs, u"b"_qs})));
    QCOMPARE(map->cookie(), QString::number(qint32(quintptr(map.data()))));
}

void TstLiveMap::namesItsListByTypeAndId()
{
    const auto named = Map::create(QSharedPointer<zel::ListApiMultiplexer>::create(pipe),
                                   QSharedPointer<NoteAdapter>::create(), u"notes"_qs, u"box"_qs);
    named->requestListElements({u"k"_qs}, QString());
    QVERIFY(pipe->expectSentText(R"({"requestListElements":{"elements":[{"id":"k"}],"type":"notes","id":"box"}})"));
    map->requestListElements({}, u"c"_qs);
    QVERIFY(pipe->expectSentText(R"({"requestListElements":{"cookie":"c","elements":[],"type":"notes"}})"));
}

void TstLiveMap::announcesTheValueAndThenItsKey()
{
    const Value a = get(u"a"_qs);
    iface::ObserverFunctorAdapter observer([&] {
        QVERIFY(changed.isEmpty());
        changed.append(u"value "_qs + a.getValue().text);
    });
    a.impl()->addObserver(&observer);
    connect(map.data(), &iface::ObservableMapImplBase::mapChanged, this, [&] { changed.append(text(u"b"_qs)); });
    pipe->inject(listMessage("listChunk", {noteJson(u"a"_qs, u"1"_qs), noteJson(u"b"_qs, u"2"_qs)}));
    // One key at a time: "b" is still as it was when "a" is announced.
    QCOMPARE(changed, QStringList({u"value 1"_qs, u"a"_qs, QString(), u"b"_qs, u"2"_qs}));
}

void TstLiveMap::settlesAnAnsweredRequestOnce()
{
    const Value a = get(u"a"_qs);
    const Value unknown = get(u"unknown"_qs);
    QTRY_COMPARE(pipe->sentCount(), 1);
    int told = 0;
    iface::ObserverFunctorAdapter observer([&] { ++told; });
    unknown.impl()->addObserver(&observer);

    pipe->inject(listMessage("listElements", {}, {{u"cookie"_qs, u"another"_qs}}));
    pipe->inject(listMessage("listChunk", {}, {{u"last"_qs, true}}));
    answer({u"a"_qs}, false);
    QVERIFY(map->isLoaded(u"a"_qs));
    QVERIFY(!map->isLoaded(u"unknown"_qs));
    for (int i = 0; i < 2; ++i) {
        pipe->inject(listMessage("listChunk", {}, {{u"last"_qs, true}}));
        QVERIFY(map->isLoaded(u"unknown"_qs));
        QCOMPARE(told, 1);
    }
    QCOMPARE(changed, QStringList(u"a"_qs));
}

void TstLiveMap::asksForMoreBeforeItStoresAnAnswer()
{
    QStringList keys;
    for (int i = 0; i < 45; ++i) {
        keys.append(QString::number(100 + i));
        get(keys.last());
    }
    QTRY_COMPARE(pipe->sentCount(), 1);
    QList<int> sentWhenStored;
    connect(map.data(), &iface::ObservableMapImplBase::mapChanged, this, [&] {
        sentWhenStored.append(pipe->sentCount());
        // The service is quick, and the application shows a dialog.
        if (sentWhenStored.size() == 11)
            answer(keys.mid(20, 20));
    });
    answer(keys.mid(0, 10), false);
    QCOMPARE(pipe->sentCount(), 1);
    answer(keys.mid(10, 10));
    QCOMPARE(pipe->sentCount(), 2);
    QVERIFY(map->isLoaded(u"139"_qs));
    QTRY_COMPARE(pipe->sentCount(), 3);
    QVERIFY2(!sentWhenStored.mid(10).contains(1), "asked for after the answer was stored");
    QCOMPARE(changed, keys.mid(0, 40));
    answer(keys.mid(40));
    QVERIFY(map->isLoaded(u"144"_qs));
    turn();
    QCOMPARE(pipe->sentCount(), 3);
}

void TstLiveMap::asksAgainForWhatAHandlerKeptFromBeingStored()
{
    QStringList keys;
    for (int i = 0; i < 40; ++i) {
        keys.append(QString::number(100 + i));
        get(keys.last());
    }
    QTRY_COMPARE(pipe->sentCount(), 1);
    iface::ObserverFunctorAdapter throwing([] { throw std::runtime_error("no"); });
    get(u"110"_qs).impl()->addObserver(&throwing);
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, answer(keys.mid(0, 20)));
    QVERIFY(map->isLoaded(u"110"_qs) && !map->isLoaded(u"111"_qs));
    QCOMPARE(pipe->sentCount(), 2);
    answer(keys.mid(20));
    QTRY_COMPARE(pipe->sentCount(), 3);
    QCOMPARE(pipe->sent().last(), request(keys.mid(11, 9)));
    answer(keys.mid(11, 9));
    QVERIFY(map->isLoaded(u"111"_qs) && map->isLoaded(u"139"_qs));
}

void TstLiveMap::changesOnlyWhatIsLoaded()
{
    const Value asked = get(u"asked"_qs);
    pipe->inject(listMessage("listChange", {noteJson(u"asked"_qs, u"1"_qs), noteJson(u"never"_qs, u"1"_qs)}));
    QVERIFY(asked.getValue() == Note());
    QVERIFY(!map->isLoaded(u"asked"_qs) && !map->isLoaded(u"never"_qs));
    QVERIFY(changed.isEmpty());
}

void TstLiveMap::asksAgainForEverythingAfterAReconnection()
{
    get(u"a"_qs);
    QTRY_COMPARE(pipe->sentCount(), 1);
    answer({u"a"_qs});
    pipe->inject(listMessage("listAdd", {noteJson(u"b"_qs, u"1"_qs)}));
    pipe->clearSent();
    pipe->setConnected(false);
    QVERIFY(pipe->expectNothingSent());
    pipe->setConnected(true);
    QCOMPARE(pipe->sentCount(), 1);
    const auto body = QJsonDocument::fromJson(pipe->takeSent()).object().value(u"requestListElements"_qs).toObject();
    QCOMPARE(body.value(u"elements"_qs).toArray().size(), 2);
    QCOMPARE(body.value(u"cookie"_qs).toString(), map->cookie());
}

void TstLiveMap::aReconnectionDoesNotDisturbTheRequestUnderWay()
{
    pipe->setConnected(false);
    pipe->setConnected(true); // asks for nothing yet
    get(u"new"_qs);
    QTRY_COMPARE(pipe->sentCount(), 2);
    answer({});
    QVERIFY(!map->isLoaded(u"new"_qs));
    pipe->inject(listMessage("listAdd", {noteJson(u"old"_qs, u"1"_qs)}));
    pipe->setConnected(false);
    pipe->setConnected(true);
    answer({u"old"_qs});
    QVERIFY(!map->isLoaded(u"new"_qs));
    answer({u"new"_qs});
    QVERIFY(map->isLoaded(u"new"_qs));
    get(u"next"_qs);
    QTRY_COMPARE(pipe->sentCount(), 4);
}

void TstLiveMap::keepsTheOrderOfNestedMessages()
{
    pipe->inject(listMessage("listAdd", {noteJson(u"b"_qs, u"0"_qs)}));
    bool nested = false;
    connect(map.data(), &iface::ObservableMapImplBase::mapChanged, this, [&] {
        if (!std::exchange(nested, true))
            pipe->inject(listMessage("listChange", {noteJson(u"b"_qs, u"2"_qs)}));
    });
    pipe->inject(listMessage("listChunk", {noteJson(u"a"_qs, u"1"_qs), noteJson(u"b"_qs, u"1"_qs)}));
    QCOMPARE(text(u"b"_qs), u"2"_qs);
    QCOMPARE(changed, QStringList({u"b"_qs, u"a"_qs, u"b"_qs, u"b"_qs}));
}

void TstLiveMap::mayBeDroppedWhileItAnnounces()
{
    connect(map.data(), &iface::ObservableMapImplBase::mapChanged, this, [&] { map.reset(); });
    pipe->inject(
        listMessage("listChunk", {noteJson(u"a"_qs, u"1"_qs), noteJson(u"b"_qs, u"1"_qs)}, {{u"last"_qs, true}}));
    QVERIFY(!map);
}

void TstLiveMap::equalsAModelUnderRandomMessages()
{
    QRandomGenerator random = seededRandom();
    const auto where = [&](int round) { return qPrintable(u"round %1"_qs.arg(round)); };
    QHash<QString, Note> model;
    QHash<QString, Note> mirror;
    connect(map.data(), &iface::ObservableMapImplBase::mapChanged, this, [&](const iface::MapChange& change) {
        const QString key = change.keys<QString>().value(0);
        const Note now = get(key).getValue();
        QVERIFY(!(mirror.value(key) == now)); // nothing is announced that did not change
        mirror.insert(key, now);
    });
    for (int round = 0; round < 2000; ++round) {
        const bool isChange = random.bounded(2) == 0;
        QJsonArray elements;
        for (int i = 0, n = random.bounded(5); i < n; ++i) {
            const QString key = random.bounded(12) == 0 ? QString() : QString::number(random.bounded(30));
            QJsonObject element;
            if (!key.isEmpty())
                element.insert(u"id"_qs, key);
            Note note = isChange ? model.value(key) : Note();
            note.id = key;
            if (random.bounded(2)) {
                note.text = QString::number(random.bounded(3));
                element.insert(u"text"_qs, note.text);
            }
            if (random.bounded(2)) {
                note.stars = random.bounded(3);
                element.insert(u"stars"_qs, note.stars);
            }
            elements.append(element);
            if (!isChange || model.contains(key))
                model.insert(key, note);
        }
        // None of these touches a map, which forgets nothing.
        const char* const strange[] = {"listAll", "listRemove", "listWindow"};
        pipe->inject(listMessage(strange[random.bounded(3)], elements));
        const char* const names[] = {"listAdd", "listChunk", "listChange"};
        pipe->inject(listMessage(names[isChange ? 2 : random.bounded(2)], elements,
                                 random.bounded(3) ? QJsonObject() : QJsonObject{{u"last"_qs, true}}));
        for (auto note = model.cbegin(); note != model.cend(); ++note) {
            QVERIFY2(get(note.key()).getValue() == note.value(), where(round));
            QVERIFY2(mirror.value(note.key()) == note.value(), where(round));
        }
    }
    turn();
    QVERIFY(pipe->expectNothingSent());
}

QTEST_GUILESS_MAIN(TstLiveMap)
#include "tst_livemap.moc"
