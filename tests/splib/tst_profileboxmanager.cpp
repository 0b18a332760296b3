// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxManager.h>

#include <common/TestMain.h>
#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/SlogCapture.h>

#include <QCryptographicHash>
#include <QScopeGuard>
#include <QTest>

using zelsplib::Avatar;
using zelsplib::ProfileBoxImage;
using zelsplib::ProfileBoxItem;
using zelsplib::ProfileBoxState;
using Manager = zelsplib::ProfileBoxManager<RecordingProfileBox>;

namespace {

QByteArray streamIdOf(int lowByte)
{
    return QCryptographicHash::hash(QByteArray("requestProfileBoxImage-") + static_cast<char>(lowByte),
                                    QCryptographicHash::Sha1)
        .toHex();
}

const QString letters(int count)
{
    return QString(count, u'x');
}

struct Fixture
{
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    EventLog log;
    RecordingGates gates;
    Manager manager{QSharedPointer<zel::ListApiMultiplexer>::create(pipe),
                    QSharedPointer<zel::JsonStream>::create(pipe), &gates};

    Fixture()
    {
        gates.log = &log;
        manager.eventHandler().log = &log;
    }

    void init()
    {
        manager.init();
        QTRY_COMPARE(pipe->sentCount(), 2);
        pipe->clearSent();
    }

    /// A box whose lists have come: item i1 and icon 7.
    void initWithBox()
    {
        init();
        whole("profileBoxItem", R"({"itemId":"i1","text":"a"})");
        whole("profileBoxImage", R"({"imageId":"7","imageHash":"h7"})");
        QCOMPARE(log.take(), lines({"gate box"}));
    }

    void whole(const QByteArray& list, const QByteArray& elements)
    {
        pipe->inject(R"({"listAll":{"type":")" + list + R"("}})");
        pipe->inject(R"({"listChunk":{"type":")" + list + R"(","elements":[)" + elements + R"(],"last":true}})");
    }
    void message(const char* type, const QByteArray& list, const QByteArray& elements)
    {
        pipe->inject(R"({")" + QByteArray(type) + R"(":{"type":")" + list + R"(","elements":[)" + elements + "]}}");
    }
    void stream(const QByteArray& id, const QByteArray& data)
    {
        pipe->inject(R"({"stream":{"id":")" + id + R"(","value":")" + data.toBase64() + R"(","last":true}})");
    }

    bool createIcon(int id, const QByteArray& data)
    {
        return manager.createProfileBoxImage(id, Avatar::Png, data.constData(), static_cast<unsigned>(data.size()));
    }
    QString items() const
    {
        QList<ProfileBoxItem> items;
        manager.getProfileBoxItems(items);
        QStringList texts;
        for (const ProfileBoxItem& item : items)
            texts.append(item.getItemId() + u'=' + item.getText());
        return texts.join(u' ');
    }
};

} // namespace

class TstProfileBoxManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isReadyWhenBothListsHaveCome()
    {
        Fixture f;
        QCOMPARE(f.manager.profileBoxState(), ProfileBoxState::Loading);
        f.manager.init();
        QTRY_COMPARE(f.pipe->sentCount(), 2);
        QVERIFY(f.pipe->expectSentText(R"({"requestListAll":{"type":"profileBoxImage"}})"));
        QVERIFY(f.pipe->expectSentText(R"({"requestListAll":{"type":"profileBoxItem"}})"));
        f.whole("profileBoxItem", "");
        QCOMPARE(f.log.take(), QStringList());
        f.whole("profileBoxImage", "");
        QCOMPARE(f.log.take(), lines({"gate box"}));
        QCOMPARE(f.manager.profileBoxState(), ProfileBoxState::Ready);
        f.whole("profileBoxImage", R"({"imageId":"1"})");
        f.whole("profileBoxItem", "");
        QCOMPARE(f.log.take(), lines({"icon added 1 "}));
    }

    void checksItems()
    {
        Fixture f;
        const auto create = [&f](const QString& text, const QString& cookie) {
            const SlogCapture log(5);
            const bool isTaken = f.manager.createProfileBoxItem(text, {}, cookie);
            return isTaken ? QStringLiteral("taken") : log.lines(2).join(u' ');
        };
        const QString failure = QStringLiteral("Error:Failed to create profile box item: ");
        QCOMPARE(create(letters(98) + QStringLiteral("\n\r"), letters(128)), QStringLiteral("taken"));
        f.pipe->clearSent();
        // The text is looked at before the cookie, its length before its lines.
        QCOMPARE(create({}, letters(129)), failure + QStringLiteral("text is null or empty"));
        QCOMPARE(create(letters(98) + QStringLiteral("\n\n\n"), {}), failure + QStringLiteral("text > 100 chars"));
        for (const char* text : {"a\n\n\n", "a\r\nb\r\nc"})
            QCOMPARE(create(QString::fromLatin1(text), letters(129)),
                     failure + QStringLiteral("text contains more than 2 new line chars"));
        QCOMPARE(create(letters(100), letters(129)), failure + QStringLiteral("cookie > 128 chars"));
        QVERIFY(f.pipe->expectNothingSent());

        QVERIFY(f.manager.createProfileBoxItem(QStringLiteral("t"), {}, QString()));
        QVERIFY(f.pipe->expectSentText(R"({"createProfileBoxItem":{"text":"t","cookie":""}})"));
        QVERIFY(f.manager.createProfileBoxItem(QStringLiteral("t"), 0, QStringLiteral("c")));
        QVERIFY(f.pipe->expectSentText(R"({"createProfileBoxItem":{"text":"t","cookie":"c","imageId":"0"}})"));
    }

    void checksIcons()
    {
        Fixture f;
        f.initWithBox();
        const SlogCapture log(5);
        const QByteArray huge(32769, 'x');
        QVERIFY(!f.manager.createProfileBoxImage(-1, Avatar::Png, nullptr, 0));
        QVERIFY(!f.manager.createProfileBoxImage(0, Avatar::Png, nullptr, 0));
        QVERIFY(!f.createIcon(0, ""));
        QVERIFY(!f.createIcon(0, huge));
        QVERIFY(!f.createIcon(7, "x"));
        QVERIFY(f.pipe->expectNothingSent());
        QVERIFY(f.createIcon(0, "x"));
        QVERIFY(f.createIcon(2147483647, huge.left(32768)));
        QVERIFY(f.pipe->expectSentText(
            R"({"createProfileBoxImage":{"imageHash":"11f6ad8ec52a2984abaafd7c3b516503785c2072","imageId":"0"}})"));
        f.pipe->clearSent();
        QVERIFY(!f.createIcon(0, "y"));
        f.message("listAdd", "profileBoxImage", R"({"imageId":"0"})");
        QVERIFY(!f.createIcon(0, "y"));
        QVERIFY(f.pipe->expectNothingSent());
        QCOMPARE(log.lines(2),
                 lines({"Error:Failed to register profile box icon: icon ID is invalid",
                        "Error:Failed to register profile box icon: null pointer found",
                        "Error:Failed to register profile box icon: icon size=0 is invalid",
                        "Error:Failed to register profile box icon: icon size=32769 is invalid",
                        "Error:Failed to register a profile box icon with id=7; already registered",
                        "Error:Failed to register profile box icon ID=0: registration of icon with same ID already in "
                        "progress",
                        "Error:Failed to register a profile box icon with id=0; already registered"}));
    }

    void sendsAPendingIconsData()
    {
        Fixture f;
        f.initWithBox();
        f.createIcon(3, "icon");
        f.pipe->clearSent();
        const SlogCapture log;
        f.pipe->inject(R"({"requestNewProfileBoxImage":{"imageId":"4","streamId":"s"}})");
        QVERIFY(f.pipe->expectNothingSent());
        f.pipe->inject(R"({"requestNewProfileBoxImage":{"imageId":"3","streamId":"s"}})");
        QVERIFY(f.pipe->expectSentText(R"({"stream":{"id":"s","value":"aWNvbg==","last":true}})"));
        QCOMPARE(log.lines(), lines({"6: zelcore request user profile box image, imageId:4, streamId:s",
                                     "3: Failed to find pending user profile box image, imageId:4, streamId:s",
                                     "6: zelcore request user profile box image, imageId:3, streamId:s"}));
    }

    void asksAgainUntilAnIconsBytesHaveGone()
    {
        const auto clock = FakeClock::install();
        const auto uninstall = qScopeGuard(&FakeClock::uninstall);
        Fixture f;
        f.initWithBox();
        f.createIcon(3, "icon");
        const QByteArray request = f.pipe->takeSent();
        // Whoever registers steadily has the older ones asked for again as well.
        for (int id = 10; id < 13; ++id) {
            clock->advance(9 * 1000);
            f.createIcon(id, "other");
        }
        f.pipe->clearSent();
        clock->advance(3 * 1000);
        QVERIFY(f.pipe->expectSentText(request));
        QVERIFY(f.pipe->expectNothingSent());

        for (const char* id : {"3", "10", "11", "12"})
            f.pipe->inject(QByteArray(R"({"requestNewProfileBoxImage":{"streamId":"s","imageId":")") + id + "\"}}");
        f.pipe->clearSent();
        clock->advance(10 * 60 * 1000);
        QVERIFY(f.pipe->expectNothingSent());

        // A service that begins anew may know nothing of it, and send the list that there was.
        f.message("listAdd", "profileBoxImage", R"({"imageId":"10"},{"imageId":"11"},{"imageId":"12"})");
        f.whole("profileBoxImage",
                R"({"imageId":"7","imageHash":"h7"},{"imageId":"10"},{"imageId":"11"},{"imageId":"12"})");
        clock->advance(30 * 1000);
        QVERIFY(f.pipe->expectSentText(request));
        f.message("listAdd", "profileBoxImage", R"({"imageId":"3","imageHash":"h"})");
        clock->advance(10 * 60 * 1000);
        QVERIFY(f.pipe->expectNothingSent());
    }

    void joinsAListedIconWithItsData()
    {
        Fixture f;
        f.initWithBox();
        f.createIcon(3, "icon");
        f.createIcon(4, "four");
        f.pipe->clearSent();
        f.message("listAdd", "profileBoxImage", R"({"imageId":"3","imageHash":"h"},{"imageId":"5"})");
        QCOMPARE(f.log.take(), lines({"icon added 3 icon", "icon added 5 "}));
        f.pipe->inject(R"({"requestNewProfileBoxImage":{"imageId":"3","streamId":"s"}})");
        QVERIFY(f.pipe->expectNothingSent());
        f.whole("profileBoxImage", R"({"imageId":"4"},{"imageId":"3","imageHash":"h"})");
        QCOMPARE(f.log.take(), lines({"icon removed 7 ", "icon removed 5 ", "icon added 4 four"}));
        f.message("listRemove", "profileBoxImage", R"({"imageId":"3"})");
        QCOMPARE(f.log.take(), lines({"icon removed 3 icon"}));
    }

    void followsTheItems()
    {
        Fixture f;
        f.initWithBox();
        f.message("listAdd", "profileBoxItem", R"({"itemId":"i2","text":"b"},{"itemId":"i1","text":"a2"})");
        f.message("listChange", "profileBoxItem", R"({"itemId":"i2","cookie":"c"})");
        QCOMPARE(f.log.take(), lines({"item added i2 b"}));
        QCOMPARE(f.items(), QStringLiteral("i1=a2 i2=b"));
        f.message("listRemove", "profileBoxItem", R"({"itemId":"i1"},{"itemId":"i9"},{"itemId":"i2"})");
        QCOMPARE(f.log.take(), lines({"item removed i1 a2", "item removed i2 b"}));
        QCOMPARE(f.manager.profileBoxItemCount(), 0);
    }

    void tellsWhatAWholeListChanges()
    {
        Fixture f;
        f.initWithBox();
        f.whole("profileBoxItem", R"({"itemId":"i3","text":"c"},{"itemId":"i1","text":"changed"},{"itemId":"i2"})");
        QCOMPARE(f.log.take(), lines({"item added i3 c", "item added i2 "}));
        f.whole("profileBoxItem", R"({"itemId":"i4","text":"d"},{"itemId":"i2"})");
        QCOMPARE(f.log.take(), lines({"item removed i3 c", "item removed i1 changed", "item added i4 d"}));
        QCOMPARE(f.items(), QStringLiteral("i4=d i2="));
    }

    void keepsOrderWhileASlotSpins()
    {
        Fixture f;
        f.initWithBox();
        f.log.on(QStringLiteral("item removed i1 a"), [&f] {
            QCOMPARE(f.items(), QStringLiteral("i2=b i3=c"));
            f.message("listRemove", "profileBoxItem", R"({"itemId":"i2"})");
        });
        f.whole("profileBoxItem", R"({"itemId":"i2","text":"b"},{"itemId":"i3","text":"c"})");
        QCOMPARE(f.log.take(), lines({"item removed i1 a", "item added i2 b", "item added i3 c", "item removed i2 b"}));
    }

    void ignoresAnIconThatItHas()
    {
        Fixture f;
        f.initWithBox();
        f.message("listAdd", "profileBoxImage", R"({"imageId":"7","imageHash":"new"})");
        QCOMPARE(f.log.take(), QStringList());
        QList<ProfileBoxImage> images;
        f.manager.buildProfileBoxImageList(images);
        QCOMPARE(images.size(), 1);
        QCOMPARE(images[0].getImageHash(), QStringLiteral("new"));
    }

    void retrievesIconsInRequestOrder()
    {
        Fixture f;
        f.initWithBox();
        QCOMPARE(streamIdOf(1), QByteArray("71df9e51ef778ae76cb68ca4583a773d3ff62ec1"));
        for (const int id : {1, 257, 200}) {
            f.manager.retrieveProfileBoxImage(id);
            QVERIFY(f.pipe->expectSentText(R"({"requestProfileBoxImage":{"streamId":")" + streamIdOf(id & 0xff) +
                                           R"(","imageId":")" + QByteArray::number(id) + R"("}})"));
        }
        f.stream("other", "x");
        f.stream(streamIdOf(200), "c");
        f.stream(streamIdOf(1), "a");
        f.stream(streamIdOf(1), "b");
        f.stream(streamIdOf(1), "d");
        QCOMPARE(f.log.take(), lines({"icon retrieved 200 image/jpeg c", "icon retrieved 1 image/jpeg a",
                                      "icon retrieved 257 image/jpeg b"}));
    }

    void tellsIconsOfOneStreamApart()
    {
        Fixture f;
        f.initWithBox();
        const auto listed = [](const char* id, const char* data) {
            const QByteArray hash = QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
            return QByteArray(R"({"imageId":")") + id + R"(","imageHash":")" + hash + "\"}";
        };
        f.whole("profileBoxImage", listed("0", "a") + ',' + listed("256", "b") + ',' + listed("512", "c"));
        f.log.take();
        for (const int id : {0, 256, 512, 768, 0})
            f.manager.retrieveProfileBoxImage(id);
        // The answer for 0 comes late, and twice; 768 is in no list; that for 512 is cut at first.
        for (const char* data : {"b", "a", "a", "d", "half of c", "c"})
            f.stream(streamIdOf(0), data);
        QCOMPARE(f.log.take(), lines({"icon retrieved 256 image/jpeg b", "icon retrieved 0 image/jpeg a",
                                      "icon retrieved 768 image/jpeg d", "icon retrieved 512 image/jpeg c"}));
    }

    void asksAgainForIconsThatHaveNotCome()
    {
        const auto clock = FakeClock::install();
        const auto uninstall = qScopeGuard(&FakeClock::uninstall);
        Fixture f;
        f.initWithBox();
        f.manager.retrieveProfileBoxImage(7);
        const QByteArray request = f.pipe->takeSent();
        f.pipe->inject(R"({"stream":{"id":")" + streamIdOf(7) + R"(","value":"aGFsZg=="}})");
        clock->advance(30 * 1000);
        QVERIFY(f.pipe->expectSentText(request));
        f.stream(streamIdOf(7), "whole");
        QCOMPARE(f.log.take(), lines({"icon retrieved 7 image/jpeg whole"}));
        clock->advance(10 * 60 * 1000);
        QVERIFY(f.pipe->expectNothingSent());
    }
};

ZEL_TEST(TstProfileBoxManager)
#include "tst_profileboxmanager.moc"
