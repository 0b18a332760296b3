// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <vx/platform/zel/Permission.h>
#include <vx/platform/zel/PermissionValue.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QSet>

template <typename... Values>
static QString written(const Values&... values)
{
    QString text;
    QDebug stream(&text);
    (stream << ... << values);
    return text.trimmed();
}

/// What profile, contacts and box show and announce, how changes go out, and what contacts, items and enumerations are
/// to those who pass them about.
class TstRecords : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void theProfileShowsAndAnnouncesFieldByField()
    {
        const UserProfile profile(ready());
        QCOMPARE(
            shown(profile),
            u"displayName=Ada personalMessage=Hello status=Available statusMessage=here ppId=my-ppid handle=my-handle "
            "displayPictureMimeType=Gif displayPicture=GIF89a applicationVersion=1.2 zelVersion=77 sdkVersion=200"_s);
        // Each change once and in order, and each value is shown before it is announced.
        m_heard->follow(profile, [&] {
            return words(profile.displayName(), profile.personalMessage(), profile.status(), profile.statusMessage());
        });
        play(u"duplicate listChange; profile showBusy=on statusMessage=out personalMessage=Bye displayName=A; profile "
             "statusMessage 'far out'; profile ppId=other handle=other appVersion=9 clientVersion=9"_s);
        QStringList told;
        for (const QString& line :
             {u"displayNameUpdated A | A Hello Available here"_s,
              u"personalMessageUpdated Bye | A Bye Available here"_s, u"statusUpdated Busy out | A Bye Busy out"_s,
              u"statusUpdated Busy far out | A Bye Busy far out"_s})
            told += {line, u"profileChanged"_s + line.mid(line.indexOf(u" |"_s))};
        QCOMPARE(m_heard->take(), told);
        play(u"picture 100"_s);
        QCOMPARE(m_heard->lines().value(1), told.last());
        // What never changes is kept.
        const auto kept = [](const UserProfile& p) {
            return words(p.ppId(), p.handle(), p.applicationVersion(), p.zelVersion());
        };
        QCOMPARE(kept(profile), u"my-ppid my-handle 1.2 77"_s);
        QCOMPARE(kept(UserProfile(m_context.get())), u"other other 9 9"_s);
        // What changes while access is lost is told with the access.
        m_heard->take();
        play(u"state TemporaryError; profile displayName=Anew; state Success"_s);
        const QString none = u" |   Available "_s;
        QCOMPARE(m_heard->lines(),
                 QStringList({u"profileChanged"_s + none, u"displayNameUpdated Anew"_s + none,
                              u"profileChanged"_s + none, u"profileChanged | Anew Bye Busy far out"_s}));
        QCOMPARE(profile.handle(), u"my-handle"_s);
    }

    void changesGoOutByTheirFieldsAndPicturesUnderTheirType()
    {
        UserProfile profile(ready());
        const auto request = [](const QByteArray& value) -> QByteArray {
            return R"({"requestListChange":{"elements":[{"name":"platformProfile","value":)" + value +
                   R"(}],"type":"global"}})";
        };
        QVERIFY(profile.requestUpdatePersonalMessage(u"\"y\"\n"_s));
        QVERIFY(profile.requestUpdateStatus(UserStatus::Busy, u"x"_s));
        for (const int status : {0, 1, 3}) // whatever is not busy is available
            QVERIFY(profile.requestUpdateStatus(static_cast<UserStatus::Type>(status), {}));
        QCOMPARE(profile.statusMessage(), u"here"_s); // shown when the service has taken it
        const QByteArray available = request(R"({"currentStatus":"","showBusy":false})");
        QCOMPARE(asked(), QByteArrayList({request("{\"personalMessage\":\"\\\"y\\\"\\n\"}"),
                                          request(R"({"currentStatus":"x","showBusy":true})"), available, available,
                                          available}));

        // Longer than can be counted on the way: it would go out cut. Nobody looks at its bytes.
        QVERIFY(!profile.requestUpdateDisplayPicture(ImageType::Png, QByteArray::fromRawData("x", 0x100000001)));
        const std::pair<ImageType::Type, QByteArray> pictures[] = {{ImageType::Png, "image/png"},
                                                                   {ImageType::Gif, "image/gif"},
                                                                   {ImageType::Bmp, "image/bmp"},
                                                                   {ImageType::Unsupported, "image/jpeg"}};
        for (const auto& [type, mimeType] : pictures) {
            QVERIFY(profile.requestUpdateDisplayPicture(type, mimeType));
            const QByteArray hash = QCryptographicHash::hash(mimeType, QCryptographicHash::Sha1).toHex();
            QCOMPARE(asked(), {request(R"({"avatarId":")" + hash + R"(","avatarMimeType":")" + mimeType + R"("})")});
            QCOMPARE(words(profile.displayPictureMimeType(), profile.displayPicture()),
                     words(type == ImageType::Unsupported ? ImageType::Jpg : type, mimeType));
        }
    }

    void contactsAreAnnouncedOnceInAllAndThenAsTheyComeAndGo()
    {
        m_context = std::make_unique<Context>(m_uuid);
        play(u"contact change cem handle=; state Success"_s); // without a handle nobody is whole
        const ContactService contacts(m_context.get());
        m_heard->follow(contacts, [&] { return all(contacts); });
        QCOMPARE(shown(contacts), u"valid=true complete=false contactCount=2"_s);
        play(u"contact change user-cem handle=cem"_s);
        const QString three = u" | true true 3 ada=Ada bea=bea cem=cem"_s;
        QCOMPARE(m_heard->take(), QStringList({u"contactListUpdated"_s + three, u"completeChanged"_s + three,
                                               u"contactCountChanged"_s + three}));

        const ContactService later(m_context.get());
        QVERIFY(later.isComplete());
        QCOMPARE(later.contacts(), contacts.contacts());
        play(u"contact add abe"_s);
        QVERIFY(later.hasApplication(u"abe"_s));
        play(u"contact uninstall abe; contact change cem handle=dan"_s);
        const QString four = u" | true true 4 abe=abe ada=Ada bea=bea cem=cem"_s; // whoever has left is still a contact
        const QString five = QString(four).replace(u'4', u'5') + u" dan=cem"_s;   // and who goes by another handle, two
        QCOMPARE(m_heard->take(), // the others hear of a list that is read for one
                 QStringList({u"contactListUpdated"_s + three, u"applicationEnabled abe"_s + four,
                              u"contactCountChanged"_s + four, u"applicationDisabled abe"_s + four,
                              u"contactUpdated dan"_s + five, u"contactCountChanged"_s + five}));

        play(u"state TemporaryError"_s);
        QCOMPARE(m_heard->lines(), QStringList({u"validChanged | false false 0"_s, u"completeChanged | false false 0"_s,
                                                u"contactCountChanged | false false 0"_s}));
    }

    void theLaterOfTwoContactsWithOneHandleCounts()
    {
        ContactService contacts(ready());
        play(uR"(send listAdd '{"type":"platformUser","elements":[{"userId":"u","handle":"cem"}]}')"_s);
        play(uR"(send listAdd '{"type":"platformContact","elements":[{"userId":"u"}]}')"_s);
        const auto before = contacts.contacts();
        for (int time = 0; time < 2; ++time) { // as it comes, and when the list is read anew
            QCOMPARE(contacts.contacts(), before);
            QCOMPARE(all(contacts), u"true true 3 ada=Ada bea=bea cem="_s);
            QVERIFY(contacts.refresh());
        }
    }

    void theBoxShowsWhatItHoldsAndAnnouncesWhatComesChangesAndGoes()
    {
        m_context = std::make_unique<Context>(m_uuid);
        ProfileBox box(m_context.get());
        m_heard->follow(box, [&] {
            QString ids;
            for (const ProfileBoxItem& item : box.items())
                ids += item.id().section(u'-', 1);
            return words(box.itemCount(), ids, box.registeredIcons().size());
        });
        // Registration does not wait for a box that may not be shown.
        play(u"permission showAppBox off; request drop requestListAll; request drop "
             "requestListAll"_s);
        settle();
        ready();
        QCOMPARE(m_heard->take(), {});
        askAgain();
        QCOMPARE(m_heard->take(), // what it held before
                 QStringList({u"registeredIconsChanged | 0  1"_s, u"itemCountChanged | 2 12 1"_s}));
        QCOMPARE(box.item(u"item-1"_s), box.items().at(0));
        QCOMPARE(box.item(u"none"_s), ProfileBoxItem());
        play(u"box change item-2 cookie=c2; box change item-2 icon=7"_s);
        QCOMPARE(shown(box.item(u"item-2"_s)), u"null=false id=item-2 text=two cookie=c2 iconId=7"_s);

        play(u"duplicate listRemove; box add three; box remove item-2; duplicate listAdd; box icon 5 100"_s);
        play(uR"(send listAll '{"type":"profileBoxImage"}'; send listChunk '{"type":"profileBoxImage","last":true,
             "elements":[{"imageId":"5"},{"imageId":"7"}]}'; box icon 5 none)"_s);
        const auto changed = u"itemUpdated item-2 | 2 12 1"_s;
        QCOMPARE(m_heard->take(),
                 QStringList({changed, changed, u"itemAdded item-3 | 3 123 1"_s, u"itemCountChanged | 3 123 1"_s,
                              u"itemRemoved item-2 | 2 13 1"_s, u"itemCountChanged | 2 13 1"_s,
                              u"iconRegistered 5 | 2 13 2"_s, u"registeredIconsChanged | 2 13 2"_s,
                              u"registeredIconsChanged | 2 13 2"_s, u"registeredIconsChanged | 2 13 1"_s}));
        play(
            uR"(send listChange '{"type":"profileBoxItem","elements":[{"itemId":"item-3","imageId":"no number"}]}')"_s);
        QCOMPARE(shown(box.item(u"item-3"_s)), u"null=false id=item-3 text=three cookie= iconId=0"_s);
        m_heard->take();
        play(u"state TemporaryError; state Success"_s);
        QCOMPARE(m_heard->lines().join(u", "_s), u"itemCountChanged | 0  0, registeredIconsChanged | 0  0, "
                                                 "itemCountChanged | 2 13 1, registeredIconsChanged | 2 13 1"_s);
        QVERIFY(box.requestRemoveAllItems()); // one by one, in their order
        QCOMPARE(QString::fromUtf8(asked().join()).remove(QRegularExpression(u"\\D"_s)), u"13"_s);
    }

    void valuesWriteThemselves()
    {
        QCOMPARE(written(RegistrationState::MaxAppsReached, EcoIdStatus::ContactExists, UserStatus::Busy,
                         Permission::ProfileUpdatesAllowed, PermissionValue::Denied, ImageType::Png),
                 u"MaxAppsReached ContactExists Busy ProfileUpdatesAllowed Denied Png"_s);
        QCOMPARE(written(static_cast<RegistrationState::Type>(99), 1), u"RegistrationState(99) 1"_s);
        QCOMPARE(written(Contact(), ProfileBoxItem()), u"Contact() ProfileBoxItem()"_s);
    }

    void imagesSayWhatTheyAre()
    {
        const std::pair<QByteArray, ImageType::Type> pictures[] = {
            {"\xff\xd8\xff\xe0", ImageType::Jpg}, {"\x89PNG\r\n\x1a\n...", ImageType::Png},
            {"GIF89a", ImageType::Gif},           {"BM1234", ImageType::Bmp},
            {"\x89PNG", ImageType::Unsupported},  {"", ImageType::Unsupported}};
        for (const auto& [data, type] : pictures)
            QCOMPARE(ImageType::ofData(data), type);
        for (const ImageType::Type type : {ImageType::Jpg, ImageType::Png, ImageType::Gif, ImageType::Bmp}) {
            QCOMPARE(ImageType::ofFile(u"not/there."_s + ImageType::suffix(type).toUpper()), type);
            QVERIFY(ImageType::mimeType(type).startsWith("image/"_L1));
        }
        QVERIFY(ImageType::mimeType(ImageType::Unsupported).isEmpty() && ImageType::suffix({}).isEmpty());
        QCOMPARE(ImageType::ofFile(u"x.jp"_s), ImageType::Unsupported);
    }

    void valuesMoveAndHash()
    {
        ContactService contacts(ready());
        check(contacts.contact(u"ada"_s), u"Contact(\"ada\", \"Ada\", Busy)"_s);
        check(ProfileBox(m_context.get()).item(u"item-1"_s), u"ProfileBoxItem(\"item-1\", \"one\", icon 7)"_s);
    }

private:
    template <typename Value>
    void check(const Value& value, const QString& text)
    {
        static_assert(std::is_nothrow_default_constructible_v<Value> && std::is_nothrow_move_constructible_v<Value> &&
                      std::is_nothrow_move_assignable_v<Value> && std::is_nothrow_swappable_v<Value>);
        QCOMPARE(written(value), text);
        QVERIFY(!value.isNull() && value != Value());
        Value from = value;
        Value to = std::move(from);
        QVERIFY(from.isNull() && from == Value()); // NOLINT(bugprone-use-after-move): that is what is promised
        QCOMPARE(to, value);
        swap(from, to);
        QVERIFY(to.isNull());
        to = std::move(from);
        QCOMPARE(to, value);
        QCOMPARE(QSet<Value>({value, to, Value(), Value()}).size(), 2);
    }
    static QString all(const ContactService& contacts)
    {
        QStringList all{words(contacts.isValid(), contacts.isComplete(), contacts.contactCount())};
        for (const Contact& contact : contacts.contacts())
            all.append(contact.handle() + u'=' + contact.displayName());
        return all.join(u' ');
    }
};

ZEL_TEST(TstRecords)
#include "tst_records.moc"
