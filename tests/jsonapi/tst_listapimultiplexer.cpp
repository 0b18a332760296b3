// SPDX-License-Identifier: Apache-2.0
#include <common/FakePipe.h>
#include <zel/ListApiMultiplexer.h>

#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// Writes down what it is called for.
class Handler : public zel::ListApiHandler
{
public:
    Handler(const QString& handlerName, QStringList* log)
        : m_name(handlerName)
        , m_log(log)
    {
    }

    void listAdd(iface::JsonObjectReader) override { write("Add"); }
    void listAll(iface::JsonObjectReader) override { write("All"); }
    void listChange(iface::JsonObjectReader) override { write("Change"); }
    void listChunk(iface::JsonObjectReader) override { write("Chunk"); }
    void listElements(iface::JsonObjectReader) override { write("Elements"); }
    void listRemove(iface::JsonObjectReader) override { write("Remove"); }
    void listWindow(iface::JsonObjectReader) override { write("Window"); }

    std::function<void()> then;

private:
    void write(const char* operation)
    {
        m_log->append(m_name + u':' + QLatin1String(operation));
        if (then)
            std::exchange(then, {})();
    }

    QString m_name;
    QStringList* m_log;
};

} // namespace

class TstListApiMultiplexer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        pipe = QSharedPointer<FakePipe>::create();
        multiplexer = QSharedPointer<zel::ListApiMultiplexer>::create(pipe);
        log.clear();
    }

    void handsEachMessageToItsOperation()
    {
        Handler handler(u"h"_s, &log);
        multiplexer->addHandler(u"T"_s, QString(), &handler);
        for (const char* operation : {"Add", "All", "Change", "Chunk", "Elements", "Remove", "Window"}) {
            pipe->inject(QByteArray("{\"list") + operation + "\":{\"type\":\"T\"}}");
            QCOMPARE(std::exchange(log, {}), QStringList(u"h:"_s + QLatin1String(operation)));
        }
    }

    void goesByTypeAndId()
    {
        Handler plain(u"plain"_s, &log);
        Handler withId(u"withId"_s, &log);
        Handler nameless(u"nameless"_s, &log);
        multiplexer->addHandler(u"T"_s, QString(), &plain);
        multiplexer->addHandler(u"T"_s, u"x"_s, &withId);
        multiplexer->addHandler(QString(), QString(), &nameless);
        say("T");
        say("T", "x");
        say("T", "y");
        say("U");
        pipe->inject(R"({"listAdd":{}})");
        pipe->inject(R"({"listAdd":5})");
        pipe->inject(R"({"listAdd":{"type":7,"id":null}})");
        QCOMPARE(log.join(u' '), u"plain:Add withId:Add nameless:Add nameless:Add nameless:Add"_s);
    }

    void removesHandlers()
    {
        Handler first(u"1"_s, &log);
        Handler second(u"2"_s, &log);
        Handler never(u"3"_s, &log);
        multiplexer->addHandler(u"T"_s, QString(), &second);
        multiplexer->addHandler(u"T"_s, QString(), &first);
        multiplexer->removeHandler(&never);
        say("T");
        QCOMPARE(log.join(u' '), u"2:Add 1:Add"_s);
        multiplexer->removeHandler(&first);
        say("T");
        QCOMPARE(log.join(u' '), u"2:Add 1:Add 2:Add"_s);
        multiplexer->removeHandler(&second);
        multiplexer->removeHandler(&second);
        say("T");
        QCOMPARE(log.size(), 3);
    }

    void movesAHandlerToAnotherList()
    {
        Handler handler(u"h"_s, &log);
        multiplexer->addHandler(u"T"_s, QString(), &handler);
        multiplexer->addHandler(u"U"_s, QString(), &handler);
        say("T");
        QVERIFY(log.isEmpty());
        say("U");
        QCOMPARE(log.size(), 1);
        multiplexer->removeHandler(&handler);
        say("T");
        say("U");
        QCOMPARE(log.size(), 1);
    }

    void asksBeforeEachCallWhetherAHandlerIsStillThere()
    {
        Handler first(u"1"_s, &log);
        auto second = std::make_unique<Handler>(u"2"_s, &log);
        Handler third(u"3"_s, &log);
        Handler added(u"added"_s, &log);
        first.then = [&] {
            multiplexer->removeHandler(second.get());
            second.reset();
            multiplexer->addHandler(u"U"_s, QString(), &third);
            multiplexer->addHandler(u"T"_s, QString(), &added);
        };
        multiplexer->addHandler(u"T"_s, QString(), &first);
        multiplexer->addHandler(u"T"_s, QString(), second.get());
        multiplexer->addHandler(u"T"_s, QString(), &third);
        say("T");
        QCOMPARE(log.join(u' '), u"1:Add"_s);
        say("T");
        QCOMPARE(log.join(u' '), u"1:Add 1:Add added:Add"_s);
    }

    void leavesThePipeWhenItGoes()
    {
        Handler handler(u"h"_s, &log);
        multiplexer->addHandler(u"T"_s, QString(), &handler);
        multiplexer.reset();
        say("T");
        QVERIFY(log.isEmpty());
        QCOMPARE(pipe->listenerCount(u"listAdd"_s), 0);
    }

private:
    void say(const char* type, const char* id = "")
    {
        pipe->inject(QByteArray("{\"listAdd\":{\"type\":\"") + type + "\",\"id\":\"" + id + "\"}}");
    }

    QSharedPointer<FakePipe> pipe;
    QSharedPointer<zel::ListApiMultiplexer> multiplexer;
    QStringList log;
};

QTEST_GUILESS_MAIN(TstListApiMultiplexer)
#include "tst_listapimultiplexer.moc"
