// SPDX-License-Identifier: Apache-2.0
#include <common/FakePipe.h>

#include <QTest>

#include <functional>
#include <memory>
#include <stdexcept>

using namespace Qt::StringLiterals;

class TstMessageListenerMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        pipe = std::make_unique<FakePipe>();
        calls.clear();
    }

    void callsTheListenersOfATypeInOrder()
    {
        listen(&a, "t", u"1"_s, [&] {
            if (calls.size() == 1)
                listen(&b, "t", u"added"_s); // and hears from the next message on
        });
        listen(&b, "t", u"2"_s);
        listen(&a, "other", u"x"_s);
        listen(&a, "t", u"3"_s);
        pipe->inject(R"({"t":{}})");
        QCOMPARE(calls.join(u' '), u"1 2 3"_s);
        pipe->inject(R"({"nobody":{}})");
        pipe->inject(R"({"t":{}})");
        QCOMPARE(calls.join(u' '), u"1 2 3 1 2 3 added"_s);
    }

    void forgetsOwnersThatAreGone()
    {
        auto owner = std::make_unique<QObject>();
        listen(owner.get(), "t", u"gone"_s);
        listen(&a, "t", u"1"_s);
        owner.reset();
        QCOMPARE(pipe->listenerCount(u"t"_s), 2);
        pipe->inject(R"({"t":{}})");
        QCOMPARE(calls, QStringList(u"1"_s));
        QCOMPARE(pipe->listenerCount(u"t"_s), 1);
    }

    void aListenerThatIsRemovedIsNotCalledAnyMore()
    {
        auto owner = std::make_unique<QObject>();
        listen(&a, "t", u"a"_s, [&] {
            pipe->removeListeners(&a); // itself, while it runs, and the next but one
            owner.reset();
        });
        listen(owner.get(), "t", u"gone"_s);
        listen(&a, "t", u"a2"_s);
        listen(&b, "t", u"b"_s);
        listen(&a, "u", u"a"_s);
        pipe->inject(R"({"t":{}})");
        pipe->inject(R"({"u":{}})");
        QCOMPARE(calls, QStringList({u"a"_s, u"b"_s}));
        QCOMPARE(pipe->listenerCount(u"t"_s), 1);
        QCOMPARE(pipe->listenerCount(u"u"_s), 0);
    }

    void threeNestedMessagesReachEveryListenerInOrder()
    {
        // The second message arrives while the first is at its first listener, the third while what is left of the
        // first is being made up for.
        int arrived = 1;
        const auto next = [&] {
            if (arrived < 3) {
                const QString last = u"c%1"_s.arg(++arrived);
                pipe->inject("{\"t\":{\"n\":\"" + QByteArray::number(arrived) + "\"}}");
                QVERIFY(calls.contains(last)); // handled within, as a nested event loop would
            }
        };
        for (const char* name : {"a", "b", "c"})
            listen(&a, "t", QString::fromLatin1(name), next);
        pipe->inject(R"({"t":{"n":"1"}})");
        QCOMPARE(calls.join(u' '), u"a1 b1 c1 a2 b2 c2 a3 b3 c3"_s);
    }

    void keepsItsReadsFromAWaitingComputation()
    {
        listen(&a, "t", u"a"_s, [&] { QVERIFY(pipe->isConnected().getValue()); });
        const auto read = iface::ObservableTracker::runAndMonitor([&] { pipe->inject(R"({"t":{}})"); });
        QCOMPARE(calls.size(), 1);
        QVERIFY(read->isEmpty());
    }

    void survivesItsOwnEnd()
    {
        listen(&a, "t", u"a"_s, [&] { pipe.reset(); });
        listen(&b, "t", u"b"_s);
        pipe->inject(R"({"t":{}})");
        QCOMPARE(calls, QStringList(u"a"_s));
    }

    void whatAListenerThrowsEndsNoMessage()
    {
        const auto thrownBy = [](const std::function<void()>& call) {
            try {
                call();
            } catch (const std::runtime_error& error) {
                return QString::fromLatin1(error.what());
            }
            return QString();
        };
        const auto throwLast = [&] { throw std::runtime_error(qPrintable(calls.last())); };
        QString nested;
        listen(&a, "t", u"a"_s, [&] {
            if (calls.size() == 1)
                nested = thrownBy([&] { pipe->inject(R"({"t":{"n":"2"}})"); });
            else
                throwLast();
        });
        listen(&b, "t", u"b"_s, throwLast);
        listen(&b, "t", u"c"_s, throwLast);
        // The rest of the first message is made up for within the second, and is not its fault.
        QCOMPARE(thrownBy([&] { pipe->inject(R"({"t":{"n":"1"}})"); }), u"b1"_s);
        QCOMPARE(nested, u"a2"_s);
        QCOMPARE(calls.join(u' '), u"a1 b1 c1 a2 b2 c2"_s);
    }

private:
    void listen(QObject* owner, const char* type, const QString& name, const std::function<void()>& then = {})
    {
        pipe->addListener(owner, QString::fromLatin1(type),
                          [this, owner, name, then](QObject* given, iface::JsonReaderAttribute message) {
                              QCOMPARE(given, owner);
                              QString n;
                              message.object().readString("n", n);
                              calls.append(name + n);
                              if (then)
                                  then();
                          });
    }

    std::unique_ptr<FakePipe> pipe;
    QStringList calls;
    QObject a, b;
};

QTEST_GUILESS_MAIN(TstMessageListenerMap)
#include "tst_messagelistenermap.moc"
