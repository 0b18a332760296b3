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
        ProfileBox box(m_context.get());
        Heard heard;
        heard.follow(box, [&] {
            QString ids;
            for (const ProfileBoxItem& item : box.items())
                ids += item.id();
            return words(box.itemCount(), ids, box.registeredIcons().size());
        });
        QTRY_COMPARE(m_context->registrationState(), RegistrationState::Unregistered);
        QVERIFY(m_service->settle());
        ready();
        QCOMPARE(heard.take(), // what it held before
                 QStringList({u"itemCountChanged | 3 123 1"_s, u"registeredIconsChanged | 3 123 1"_s}));
        QCOMPARE(shown(box.items().at(2)), u"null=false id=3 text=three cookie= iconId=0"_s);
        QCOMPARE(box.item(u"1"_s), box.items().at(0));
        QCOMPARE(box.item(u"none"_s), ProfileBoxItem());
        for (const char* change : {R"({"itemId":"1","cookie":"c2"})", R"({"itemId":"1","imageId":"8"})"})
            m_service->tell(u"listChange"_s, u"profileBoxItem"_s, change);
        QVERIFY(m_service->settle());
        QCOMPARE(shown(box.item(u"1"_s)), u"null=false id=1 text=one cookie=c2 iconId=8"_s);

        m_service->tell(u"listAdd"_s, u"profileBoxItem"_s, R"({"itemId":"4","text":"four"})");
        m_service->tell(u"listRemove"_s, u"profileBoxItem"_s, R"({"itemId":"2"})");
        m_service->tell(u"listRemove"_s, u"profileBoxItem"_s, R"({"itemId":"9"})");
        for (const auto& message : {u"listAdd"_s, u"listAdd"_s, u"listRemove"_s}) // the other items may name
            m_service->tell(message, u"profileBoxImage"_s, R"({"imageId":"5"})");
        QVERIFY(m_service->settle());
        QCOMPARE(heard.lines(), QStringList({u"itemAdded 4 | 4 1234 1"_s, u"itemCountChanged | 4 1234 1"_s,
                                             u"itemRemoved 2 | 3 134 1"_s, u"itemCountChanged | 3 134 1"_s,
                                             u"iconRegistered 5 | 3 134 2"_s, u"registeredIconsChanged | 3 134 2"_s,
                                             u"registeredIconsChanged | 3 134 1"_s}));
        QVERIFY(box.requestRemoveAllItems()); // one by one, in their order
        QCOMPARE(QString::fromUtf8(m_service->written().join()).remove(QRegularExpression(u"\\D"_s)), u"134"_s);
    }
};

ZEL_TEST(TstProfileBox)
#include "tst_profilebox.moc"
