// SPDX-License-Identifier: Apache-2.0
#include "Note.h"

#include <common/FailingAllocations.h>
#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <common/TestMain.h>
#include <zel/JsonStreamFunctorAdapter.h>
#include <zel/LiveList.h>
#include <zel/LiveMap.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>

namespace {

using List = zel::LiveList<Note>;
using Map = zel::LiveMap<QString, Note>;

// Each with a number for $.
const QByteArray toListeners = R"({"t":{"n":"$"}})";
const QByteArray toHandlers = R"({"listAdd":{"type":"handlers","n":"$"}})";

/// One of everything that is worked off in steps. Each message has three, which are heard of as a, b and c with the
/// number of the message.
struct Stage : QObject
{
    struct Handler : zel::ListApiHandler
    {
        std::function<void(iface::JsonObjectReader)> hear;
        void listAdd(iface::JsonObjectReader body) override { hear(body); }
    };

    const QSharedPointer<FakeClock> clock = FakeClock::install();
    QStringList heard;
    std::function<void(const QString&)> then = [](const QString&) {};
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    QSharedPointer<zel::ListApiMultiplexer> multiplexer = QSharedPointer<zel::ListApiMultiplexer>::create(pipe);
    std::map<QString, std::unique_ptr<QObject>> owners;
    std::map<QString, std::unique_ptr<Handler>> handlers;
    List::Pointer list = List::create(multiplexer, QSharedPointer<NoteAdapter>::create(), u"notes"_s, QString());
    Map::Pointer map = Map::create(multiplexer, QSharedPointer<NoteAdapter>::create(), u"records"_s, QString());
    QSharedPointer<zel::JsonStream> stream =
        QSharedPointer<zel::JsonStream>::create(pipe, [this](const QString& id, const QVariant&) { hear(u'c' + id); });
    std::unique_ptr<zel::JsonStreamFunctorAdapter> adapter = std::make_unique<zel::JsonStreamFunctorAdapter>(
        stream, [this](const QString& id, const QVariant&) { hear(u'b' + id); });
    QStringList listed;

    Stage()
    {
        connect(stream.data(), &zel::JsonStream::dataReceived, this, [this](const QString& id) { hear(u'a' + id); });
        QJsonArray items;
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s}) {
            listen(name);
            handle(name);
            for (const QString& id : {name, name + u'1', name + u'2', name + u'3'}) {
                listed.append(id);
                items.append(noteJson(id, QString()));
                list->addCookieCallback(id.mid(1), [this, id](const QList<QString>&) { hear(id); });
            }
        }
        pipe->inject(listMessage("listAll", {}));
        pipe->inject(listMessage("listChunk", items, {{u"last"_s, true}}));
        pipe->inject(listMessage("listAdd", items, {}, u"records"_s));
        const auto hearOf = [this](const Note& note) { hear((note.id + note.text).right(2)); };
        const auto hearOfItem = [notes = list.data(), hearOf](const QVariantList& path) {
            hearOf(notes->data(path).value<Note>());
        };
        connect(list.data(), &iface::ObservableListImpl::itemAdded, this, hearOfItem);
        connect(list.data(), &iface::ObservableListImpl::itemUpdated, this, hearOfItem);
        connect(list.data(), &iface::ObservableListImpl::itemRemoved, this,
                [this](const QVariantList& path) { hear(listed.takeAt(List::indexOfPath(path))); });
        connect(map.data(), &Map::mapChanged, this, [records = map.data(), hearOf](const iface::MapChange& change) {
            hearOf(records->doGet(change.keys<QString>().value(0)).getValue());
        });
    }
    ~Stage() override { FakeClock::uninstall(); }

    void hear(const QString& line)
    {
        heard.append(line);
        const auto call = then;
        call(line);
    }
    void hear(const QString& name, const iface::JsonObjectReader& body)
    {
        QString number;
        body.readString("n", number);
        hear(name + number);
    }
    void listen(const QString& name)
    {
        owners[name] = std::make_unique<QObject>();
        pipe->addListener(owners[name].get(), u"t"_s, [=, this](QObject*, const iface::JsonReaderAttribute& message) {
            hear(name, message.object());
        });
    }
    void handle(const QString& name, const QString& type = u"handlers"_s, const QString& id = QString())
    {
        handlers[name] = std::make_unique<Handler>();
        handlers[name]->hear = [=, this](const iface::JsonObjectReader& body) { hear(name, body); };
        multiplexer->addHandler(type, id, handlers[name].get());
    }
    void inject(QByteArray message, int number) const
    {
        pipe->inject(message.replace('$', QByteArray::number(number)));
    }
};

/// A message about three elements, of the form given with their names for @.
QByteArray three(const QByteArray& message, const QByteArray& type, const QByteArray& form)
{
    QByteArrayList elements;
    for (const char* name : {"a", "b", "c"})
        elements.append(QByteArray(form).replace('@', name));
    return "{\"" + message + "\":{\"type\":\"" + type + "\",\"elements\":[" + elements.join(',') + "]}}";
}

} // namespace

/// Whatever is worked off in steps, of each kind: message by message, and safe from what those who hear of it do.
class TstMessageOrder : public QObject
{
    Q_OBJECT

    static void addKinds()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("whenDropped");
        const auto row = [](const char* name, const QByteArray& message, const QString& whenDropped = u"a1 b1 c1"_s) {
            QTest::newRow(name) << message << whenDropped;
        };
        row("listeners", toListeners, u"a1"_s);
        row("handlers of a list", toHandlers, u"a1"_s);
        row("receivers of a stream", R"({"stream":{"id":"$","last":true}})", u"a1"_s);
        row("added items", three("listAdd", "notes", R"({"id":"+@$"})"));
        row("changed items", three("listChange", "notes", R"({"id":"@","text":"$"})"));
        row("removed items", three("listRemove", "notes", R"({"id":"@$"})"));
        row("callbacks of a cookie", R"({"listAdd":{"type":"notes","cookie":"$"}})");
        for (const char* message : {"listAdd", "listChange", "listChunk"})
            row(message, three(message, "records", R"({"id":"@","text":"$"})"));
    }

private Q_SLOTS:
    /// The second message arrives in the first step of the first, the third in the next, which is made up for then.
    /// A computation in whose event loop they arrive has read nothing of what they do.
    void keepsEachMessageWholeAndItsReadsAndExceptionsToItself_data() { addKinds(); }
    void keepsEachMessageWholeAndItsReadsAndExceptionsToItself()
    {
        QFETCH(QByteArray, message);
        Stage stage;
        int arrived = 0;
        QStringList thrown;
        const auto arrive = [&] {
            const int number = ++arrived;
            try {
                stage.inject(message, number);
            } catch (const std::runtime_error& error) {
                thrown.append(u"%1:"_s.arg(number) + QLatin1String(error.what()));
            }
            QVERIFY2(stage.heard.contains(u"c%1"_s.arg(number)), "not within, as a nested event loop would");
        };
        stage.then = [&](const QString& line) {
            QVERIFY(stage.pipe->isConnected().getValue());
            if (arrived == 3)
                throw std::runtime_error(line.toStdString());
            arrive();
        };
        QVERIFY(iface::ObservableTracker::runAndMonitor(arrive)->isEmpty());
        QCOMPARE(stage.heard.join(u' '), u"a1 b1 c1 a2 b2 c2 a3 b3 c3"_s);
        QCOMPARE(thrown.join(u' '), u"3:a3 2:a2 1:c1"_s);
    }

    void mayBeDroppedByTheFirstWhoHears_data() { addKinds(); }
    void mayBeDroppedByTheFirstWhoHears()
    {
        QFETCH(QByteArray, message);
        QFETCH(QString, whenDropped);
        Stage stage;
        stage.then = [&](const QString&) {
            stage.list.reset();
            stage.map.reset();
            stage.multiplexer.reset();
            stage.adapter.reset();
            stage.stream.reset();
            stage.pipe.reset();
        };
        stage.inject(message, 1);
        QCOMPARE(stage.heard.join(u' '), whenDropped);
    }

    void callsNobodyWhoHasLeft()
    {
        for (const QByteArray& message : {toListeners, toHandlers}) {
            Stage stage;
            stage.handle(u"last"_s);
            stage.then = [&](const QString&) {
                stage.then = [](const QString&) {};
                stage.pipe->removeListeners(stage.owners[u"a"_s].get());
                stage.pipe->removeListeners(stage.owners[u"b"_s].get());
                stage.owners.erase(u"c"_s); // without a word
                stage.listen(u"d"_s);       // and hears from the next message on
                stage.multiplexer->removeHandler(stage.handlers[u"a"_s].get());
                stage.multiplexer->removeHandler(stage.handlers[u"b"_s].get());
                stage.handlers.erase(u"b"_s);
                stage.multiplexer->addHandler(u"elsewhere"_s, QString(), stage.handlers[u"c"_s].get());
                // A new one may well begin where one that has left has ended.
                Stage::Handler* const last = stage.handlers[u"last"_s].get();
                stage.multiplexer->removeHandler(last);
                last->hear = [&](const iface::JsonObjectReader& body) { stage.hear(u"d"_s, body); };
                stage.multiplexer->addHandler(u"handlers"_s, QString(), last);
            };
            stage.inject(message, 1);
            stage.inject(message, 2);
            QCOMPARE(stage.heard.join(u' '), u"a1 d2"_s);
            QCOMPARE(stage.pipe->listenerCount(u"t"_s), message == toListeners ? 1 : 2); // who is gone is swept out
        }
        Stage stage;
        stage.then = [&](const QString&) { stage.adapter.reset(); }; // before its call, or in the middle of it
        stage.pipe->inject(R"({"stream":{"id":"1","last":true}})");
        QCOMPARE(stage.heard.join(u' '), u"a1 c1"_s);
    }

    void handsAMessageToTheHandlersOfItsList()
    {
        Stage stage;
        stage.handle(u"d"_s, u"handlers"_s, u"x"_s);
        stage.handle(u"e"_s, QString());
        const std::pair<const char*, QString> messages[] = {{R"({"type":"handlers"})", u"a b c"_s},
                                                            {R"({"type":"handlers","id":"x"})", u"d"_s},
                                                            {R"({"type":"handlers","id":"y"})", u""_s},
                                                            {"5", u"e"_s},
                                                            {R"({"type":7,"id":null})", u"e"_s}};
        for (const auto& [body, heard] : messages) {
            stage.pipe->inject("{\"listAdd\":" + QByteArray(body) + '}');
            QCOMPARE(std::exchange(stage.heard, {}).join(u' '), heard);
        }
        stage.multiplexer->removeHandler(stage.handlers[u"e"_s].get());
        stage.multiplexer->removeHandler(stage.handlers[u"e"_s].get());
        stage.pipe->inject("{\"listAdd\":{}}");
        QCOMPARE(stage.heard, QStringList());
        stage.multiplexer->addHandler(u"elsewhere"_s, QString(), stage.handlers[u"a"_s].get());
        stage.multiplexer->addHandler(u"handlers"_s, QString(), stage.handlers[u"a"_s].get());
        stage.inject(toHandlers, 1);
        QCOMPARE(stage.heard.join(u' '), u"b1 c1 a1"_s);
    }

    // Whoever is forgotten by himself, from outside or without a word, and whatever is sent and received.
    void growsNoLargerFromDayToDay()
    {
        Stage stage;
        std::optional<QObject> owners[20];
        const auto held = std::make_shared<int>();
        long before = 0;
        for (auto& owner : owners) {
            before = &owner == &owners[10] ? failing::alive : before;
            owner.emplace();
            for (QObject* const listener : std::initializer_list<QObject*>{this, &stage, &*owner})
                stage.pipe->addListener(listener, u"t"_s, [&, held](auto&&...) { stage.pipe->removeListeners(this); });
            stage.pipe->removeListeners(&stage);
            QCOMPARE(held.use_count(), 3);
            owner.reset();
            stage.inject(toListeners, 1);
            QCOMPARE(held.use_count(), 1);
            QJsonArray others;
            std::fill_n(std::back_inserter(others), 100, noteJson(u"a"_s, QString::number(&owner - owners)));
            stage.pipe->inject(listMessage("listAll", {}));
            stage.pipe->inject(listMessage("listChunk", others, {{u"last"_s, true}}));
            QCOMPARE(stage.list->locateItem(u"a"_s), 99);
            stage.map->requestListElements({u"a"_s}, {});
        }
        QCOMPARE(failing::alive, before);
    }

    void whatDiesIsReachedByNothing()
    {
        for (const auto& [isList, isNew] : {std::pair(true, true), std::pair(true, false), std::pair(false, false)}) {
            Stage stage;
            const auto value = stage.map->doGet(u"x"_s);
            if (isList)
                stage.map.reset();
            else
                stage.list.reset();
            if (!isNew) { // otherwise its request is still to go out
                turn();
                stage.pipe->inject(listMessage("listAll", {}));
                stage.pipe->clearSent();
            }
            const auto dialog = [&] {
                stage.pipe->inject(three("listAdd", "notes", R"({"id":"+@"})"));
                stage.pipe->inject(three("listAdd", "records", R"({"id":"@","text":"new"})"));
                stage.pipe->setConnected(false);
                stage.pipe->setConnected(true);
                stage.clock->advance(60 * 1000);
                turn();
            };
            connect(isList ? static_cast<QObject*>(stage.list.data()) : stage.map.data(), &QObject::destroyed, dialog);
            stage.list.reset();
            stage.map.reset();
            QCOMPARE(stage.pipe->sentCount(), 0);
            QCOMPARE(stage.heard, QStringList());
        }
    }
};

ZEL_TEST(TstMessageOrder)
#include "tst_messageorder.moc"
