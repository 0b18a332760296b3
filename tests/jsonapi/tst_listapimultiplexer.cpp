// SPDX-License-Identifier: Apache-2.0
#include <common/FakePipe.h>
#include <common/TestMain.h>
#include <zel/ListApiMultiplexer.h>

using namespace Qt::StringLiterals;

namespace {

/// Writes down what it is called for.
struct Handler : zel::ListApiHandler
{
    const QString name;
    QStringList& log;

    Handler(QString handlerName, QStringList& calls)
        : name(std::move(handlerName))
        , log(calls)
    {
    }
    void listAdd(iface::JsonObjectReader) override { log.append(name + u":Add"_s); }
    void listAll(iface::JsonObjectReader) override { log.append(name + u":All"_s); }
    void listChange(iface::JsonObjectReader) override { log.append(name + u":Change"_s); }
    void listChunk(iface::JsonObjectReader) override { log.append(name + u":Chunk"_s); }
    void listElements(iface::JsonObjectReader) override { log.append(name + u":Elements"_s); }
    void listRemove(iface::JsonObjectReader) override { log.append(name + u":Remove"_s); }
    void listWindow(iface::JsonObjectReader) override { log.append(name + u":Window"_s); }
};

} // namespace

class TstListApiMultiplexer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void handsEachMessageToTheOperationOfItsList()
    {
        QStringList log;
        Handler plain(u"plain"_s, log);
        Handler second(u"second"_s, log);
        Handler withId(u"withId"_s, log);
        Handler nameless(u"nameless"_s, log);
        const auto pipe = QSharedPointer<FakePipe>::create();
        auto multiplexer = QSharedPointer<zel::ListApiMultiplexer>::create(pipe);
        const auto heard = [&](const QByteArray& operation, const QByteArray& body) {
            pipe->inject("{\"list" + operation + "\":" + body + '}');
            return std::exchange(log, {}).join(u' ');
        };
        multiplexer->addHandler(u"T"_s, QString(), &plain);
        multiplexer->addHandler(u"T"_s, QString(), &second);
        multiplexer->addHandler(u"T"_s, u"x"_s, &withId);
        multiplexer->addHandler(QString(), QString(), &nameless);
        for (const QByteArray operation : {"Add", "All", "Change", "Chunk", "Elements", "Remove", "Window"}) {
            const auto called = [&](const char* by) { return QLatin1String(by) + u':' + QLatin1String(operation); };
            QCOMPARE(heard(operation, R"({"type":"T"})"), called("plain") + u' ' + called("second"));
            QCOMPARE(heard(operation, R"({"type":"T","id":"x"})"), called("withId"));
            QCOMPARE(heard(operation, R"({"type":"T","id":"y"})") + heard(operation, R"({"type":"U"})"), QString());
            for (const char* body : {"{}", "5", R"({"type":7,"id":null})"})
                QCOMPARE(heard(operation, body), called("nameless"));
        }

        multiplexer->addHandler(u"U"_s, QString(), &plain); // which moves it
        QCOMPARE(heard("Add", R"({"type":"T"})"), u"second:Add"_s);
        QCOMPARE(heard("Add", R"({"type":"U"})"), u"plain:Add"_s);
        Handler never(u"never"_s, log);
        for (Handler* handler : {&plain, &never, &plain})
            multiplexer->removeHandler(handler);
        QCOMPARE(heard("Add", R"({"type":"U"})"), QString());
        QCOMPARE(heard("Add", R"({"type":"T"})"), u"second:Add"_s);
        multiplexer.reset();
        QCOMPARE(heard("Add", R"({"type":"T"})"), QString());
        QCOMPARE(pipe->listenerCount(u"listAdd"_s), 0);
    }
};

ZEL_TEST(TstListApiMultiplexer)
#include "tst_listapimultiplexer.moc"
