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
                ids += item.id().section(u'-', 1);
            return words(box.itemCount(), ids, box.registeredIcons().size());
        });
        settle();
        ready();
        QCOMPARE(heard.take(), // what it held before
                 QStringList({u"itemCountChanged | 2 12 1"_s, u"registeredIconsChanged | 2 12 1"_s}));
        QCOMPARE(box.item(u"item-1"_s), box.items().at(0));
        QCOMPARE(box.item(u"none"_s), ProfileBoxItem());
        play(u"box change item-2 cookie=c2; box change item-2 icon=7"_s);
        QCOMPARE(shown(box.item(u"item-2"_s)), u"null=false id=item-2 text=two cookie=c2 iconId=7"_s);

        play(u"duplicate listRemove; box add three; box remove item-2; duplicate listAdd; box icon 5 100; "
             "box icon 5 none"_s);
        QCOMPARE(heard.lines(), QStringList({u"itemAdded item-3 | 3 123 1"_s, u"itemCountChanged | 3 123 1"_s,
                                             u"itemRemoved item-2 | 2 13 1"_s, u"itemCountChanged | 2 13 1"_s,
                                             u"iconRegistered 5 | 2 13 2"_s, u"registeredIconsChanged | 2 13 2"_s,
                                             u"registeredIconsChanged | 2 13 1"_s}));
        play(
            uR"(send listChange '{"type":"profileBoxItem","elements":[{"itemId":"item-3","imageId":"no number"}]}')"_s);
        QCOMPARE(shown(box.item(u"item-3"_s)), u"null=false id=item-3 text=three cookie= iconId=0"_s);
        QVERIFY(box.requestRemoveAllItems()); // one by one, in their order
        QCOMPARE(QString::fromUtf8(asked().join()).remove(QRegularExpression(u"\\D"_s)), u"13"_s);
    }
};

ZEL_TEST(TstProfileBox)
#include "tst_profilebox.moc"
