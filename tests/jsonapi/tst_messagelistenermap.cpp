// SPDX-License-Identifier: Apache-2.0
#include <common/FakePipe.h>

#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <memory>
#include <stdexcept>

class TstMessageListenerMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        pipe = std::make_unique<FakePipe>();
        calls.clear();
    }

    void callsTheListenersOfATypeInOrder();
    void handsOutTheBodyAndTheOwner();
    void forgetsOwnersThatAreGone();
    void removesAllListenersOfAnOwner();
    void aListenerThatIsRemovedIsNotCalledAnyMore();
    void aListenerThatIsAddedHearsFromTheNextMessageOn();
    void aNestedMessageWaitsForTheListenersOfTheOneBefore();
    void threeNestedMessagesReachEveryListenerInOrder();
    void survivesItsOwnEnd();
    void goesOnAfterAListenerThrows();
    void refusesAListenerWithoutAnOwner();

private:
    void listen(QObject* owner, const char* type, const QString& name, const std::function<void()>& then = {})
    {
        pipe->addListener(owner, QString::fromLatin1(type),
                          [this, name, then](QObject*, iface::JsonReaderAttribute message) {
                              QString n;
                              message.object().readString("n", n);
                              calls.append(name + n);
                              if (then) {
                                  then();
                              }
                          });
    }

    std::unique_ptr<FakePipe> pipe;
    QStringList calls;
    QObject a, b;
};

void TstMessageListenerMap::callsTheListenersOfATypeInOrder()
{
    listen(&a, "t", u"1"_qs);
    listen(&b, "t", u"2"_qs);
    listen(&a, "other", u"x"_qs);
    listen(&a, "t", u"3"_qs);
    pipe->inject(R"({"t":{}})");
    QCOMPARE(calls, QStringList({u"1"_qs, u"2"_qs, u"3"_qs}));
    pipe->inject(R"({"nobody":{}})");
    QCOMPARE(calls.size(), 3);
}

void TstMessageListenerMap::handsOutTheBodyAndTheOwner()
{
    QObject* owner = nullptr;
    QString text;
    pipe->addListener(&a, u"t"_qs, [&](QObject* given, iface::JsonReaderAttribute message) {
        owner = given;
        message.object().readString("text", text);
    });
    pipe->inject(R"({"t":{"text":"hello"},"second":{}})");
    QCOMPARE(owner, &a);
    QCOMPARE(text, u"hello"_qs);
}

void TstMessageListenerMap::forgetsOwnersThatAreGone()
{
    auto owner = std::make_unique<QObject>();
    listen(owner.get(), "t", u"gone"_qs);
    listen(&a, "t", u"1"_qs);
    owner.reset();
    QCOMPARE(pipe->listenerCount(u"t"_qs), 2);
    pipe->inject(R"({"t":{}})");
    QCOMPARE(calls, QStringList(u"1"_qs));
    QCOMPARE(pipe->listenerCount(u"t"_qs), 1);
}

void TstMessageListenerMap::removesAllListenersOfAnOwner()
{
    listen(&a, "t", u"a"_qs);
    listen(&b, "t", u"b"_qs);
    listen(&a, "u", u"a"_qs);
    pipe->removeListeners(&a);
    pipe->removeListeners(&a);
    pipe->inject(R"({"t":{}})");
    pipe->inject(R"({"u":{}})");
    QCOMPARE(calls, QStringList(u"b"_qs));
    QCOMPARE(pipe->listenerCount(u"u"_qs), 0);
}

void TstMessageListenerMap::aListenerThatIsRemovedIsNotCalledAnyMore()
{
    auto owner = std::make_unique<QObject>();
    listen(&a, "t", u"a"_qs, [&] {
        pipe->removeListeners(&a); // itself, while it runs, and the next but one
        owner.reset();
    });
    listen(owner.get(), "t", u"gone"_qs);
    listen(&a, "t", u"a2"_qs);
    listen(&b, "t", u"b"_qs);
    pipe->inject(R"({"t":{}})");
    QCOMPARE(calls, QStringList({u"a"_qs, u"b"_qs}));
    QCOMPARE(pipe->listenerCount(u"t"_qs), 1);
}

void TstMessageListenerMap::aListenerThatIsAddedHearsFromTheNextMessageOn()
{
    listen(&a, "t", u"a"_qs, [&] {
        if (calls.size() == 1) {
            listen(&b, "t", u"b"_qs);
        }
    });
    pipe->inject(R"({"t":{}})");
    QCOMPARE(calls, QStringList(u"a"_qs));
    pipe->inject(R"({"t":{}})");
    QCOMPARE(calls, QStringList({u"a"_qs, u"a"_qs, u"b"_qs}));
}

void TstMessageListenerMap::aNestedMessageWaitsForTheListenersOfTheOneBefore()
{
    bool nested = false;
    listen(&a, "t", u"a"_qs, [&] {
        if (!std::exchange(nested, true)) {
            pipe->inject(R"({"t":{"n":"-second"}})");
            QCOMPARE(calls.last(), u"b-second"_qs); // handled within, as a nested event loop would
        }
    });
    listen(&b, "t", u"b"_qs);
    pipe->inject(R"({"t":{"n":"-first"}})");
    QCOMPARE(calls, QStringList({u"a-first"_qs, u"b-first"_qs, u"a-second"_qs, u"b-second"_qs}));
}

void TstMessageListenerMap::threeNestedMessagesReachEveryListenerInOrder()
{
    // The second message arrives while the first is at its first listener, the third while what is left of the first
    // is being made up for.
    int arrived = 1;
    const auto next = [&] {
        if (arrived < 3) {
            ++arrived;
            pipe->inject("{\"t\":{\"n\":\"" + QByteArray::number(arrived) + "\"}}");
        }
    };
    listen(&a, "t", u"a"_qs, next);
    listen(&a, "t", u"b"_qs, next);
    listen(&a, "t", u"c"_qs, next);
    pipe->inject(R"({"t":{"n":"1"}})");
    QCOMPARE(calls.join(u' '), u"a1 b1 c1 a2 b2 c2 a3 b3 c3"_qs);
}

void TstMessageListenerMap::survivesItsOwnEnd()
{
    listen(&a, "t", u"a"_qs, [&] { pipe.reset(); });
    listen(&b, "t", u"b"_qs);
    pipe->inject(R"({"t":{}})");
    QCOMPARE(calls, QStringList(u"a"_qs));
}

void TstMessageListenerMap::goesOnAfterAListenerThrows()
{
    bool thrown = false;
    listen(&a, "t", u"a"_qs, [&] {
        if (!std::exchange(thrown, true)) {
            pipe->removeListeners(&b);
            throw std::runtime_error("listener");
        }
    });
    listen(&b, "t", u"b"_qs);
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, pipe->inject(R"({"t":{}})"));
    QCOMPARE(pipe->listenerCount(u"t"_qs), 1);
    pipe->inject(R"({"t":{}})");
    QCOMPARE(calls, QStringList({u"a"_qs, u"a"_qs}));
}

void TstMessageListenerMap::refusesAListenerWithoutAnOwner()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"needs an owner"_qs));
    listen(nullptr, "t", u"x"_qs);
    pipe->inject(R"({"t":{}})");
    QVERIFY(calls.isEmpty());
}

QTEST_GUILESS_MAIN(TstMessageListenerMap)
#include "tst_messagelistenermap.moc"
