// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <vx/platform/zel/ProfileBox.h>

class TstProfileBox : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhatTheBoxHoldsAndAnnouncesWhatComesAndGoes()
    {
        m_context = std::make_unique<Context>(m_uuid);
        const ProfileBox box(m_context.get());
        Heard heard;
        heard.note(box, &ProfileBox::itemCountChanged, u"count"_s, [&] { return QString::number(box.itemCount()); });
        heard.note(box, &ProfileBox::itemAdded, u"added"_s, [&] { return box.items().last().text(); });
        heard.note(box, &ProfileBox::itemRemoved, u"removed"_s, [&] { return box.item(u"2"_s).id(); });
        heard.note(box, &ProfileBox::iconRegistered, u"registered"_s);
        heard.note(box, &ProfileBox::registeredIconsChanged, u"icons"_s,
                   [&] { return QString::number(box.registeredIcons().size()); });
        QTRY_COMPARE(m_context->registrationState(), RegistrationState::Unregistered);
        QVERIFY(m_desk->settle());
        ready();
        QCOMPARE(heard.take(), QStringList({u"count | 3"_s, u"icons | 1"_s})); // what it held before
        QCOMPARE(shown(box.items().at(2)), u"null=false id=3 text=three cookie= iconId=0"_s);
        QCOMPARE(box.item(u"1"_s), box.items().at(0));
        QCOMPARE(box.item(u"none"_s), ProfileBoxItem());
        for (const char* change : {R"({"itemId":"1","cookie":"c2"})", R"({"itemId":"1","imageId":"8"})"})
            m_desk->tell(u"listChange"_s, u"profileBoxItem"_s, change);
        QVERIFY(m_desk->settle());
        QCOMPARE(shown(box.item(u"1"_s)), u"null=false id=1 text=one cookie=c2 iconId=8"_s);

        m_desk->tell(u"listAdd"_s, u"profileBoxItem"_s, R"({"itemId":"4","text":"four"})");
        m_desk->tell(u"listRemove"_s, u"profileBoxItem"_s, R"({"itemId":"2"})");
        m_desk->tell(u"listRemove"_s, u"profileBoxItem"_s, R"({"itemId":"9"})");
        for (const auto& message : {u"listAdd"_s, u"listAdd"_s, u"listRemove"_s}) // the other items may name
            m_desk->tell(message, u"profileBoxImage"_s, R"({"imageId":"5"})");
        QVERIFY(m_desk->settle());
        QCOMPARE(heard.take(), QStringList({u"added 4 | four"_s, u"count | 4"_s, u"removed 2 | "_s, u"count | 3"_s,
                                            u"registered 5"_s, u"icons | 2"_s, u"icons | 1"_s}));
    }

    void asksForTheRemovalOfItems()
    {
        ProfileBox box(ready());
        const auto removal = [](const char* id) {
            return QByteArray("{\"requestListRemove\":{\"elements\":[{\"itemId\":\"") + id +
                   "\"}],\"type\":\"profileBoxItem\"}}";
        };
        QVERIFY(box.requestRemoveItem(u"3"_s) && box.requestRemoveAllItems()); // one by one, in their order
        QCOMPARE(m_desk->written(), QByteArrayList({removal("3"), removal("1"), removal("2"), removal("3")}));
        QCOMPARE(box.itemCount(), 3); // the service decides
    }

    void retrievesAnIconThatShowsNoType()
    {
        const ProfileBox box(ready());
        Heard heard;
        heard.note(box, &ProfileBox::iconRetrieved, QString());
        QVERIFY(box.requestRetrieveIcon(7));
        const auto request = Desk::json(m_desk->nextMessage()).value("requestProfileBoxImage"_L1);
        m_desk->tellStream(request["streamId"_L1].toString(), "bytes");
        QTRY_COMPARE(heard.lines(), QStringList{u"7 Jpg bytes"_s});
    }
};

ZEL_TEST(TstProfileBox)
#include "tst_profilebox.moc"
