// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QCryptographicHash>

class TstUserProfile : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void showsAndAnnouncesTheRecordFieldByField()
    {
        const UserProfile profile(ready());
        QCOMPARE(
            shown(profile),
            u"displayName=Ada personalMessage=Hello status=Available statusMessage=here ppId=my-ppid handle=my-handle "
            "displayPictureMimeType=Gif displayPicture=GIF89a applicationVersion=1.2 "
            "zelVersion=77 sdkVersion=200"_s);
        Heard heard; // each change once and in order, and each value is shown before it is announced
        heard.follow(profile, [&] {
            return words(profile.displayName(), profile.personalMessage(), profile.status(), profile.statusMessage());
        });
        play(u"duplicate listChange; profile showBusy=on statusMessage=out personalMessage=Bye displayName=A; profile "
             "statusMessage 'far out'; profile ppId=other handle=other appVersion=9 clientVersion=9"_s);
        QCOMPARE(heard.lines().filter(u"Updated"_s),
                 QStringList({u"displayNameUpdated A | A Hello Available here"_s,
                              u"personalMessageUpdated Bye | A Bye Available here"_s,
                              u"statusUpdated Busy out | A Bye Busy out"_s,
                              u"statusUpdated Busy far out | A Bye Busy far out"_s}));
        // What never changes is kept.
        QCOMPARE(words(profile.ppId(), profile.handle(), profile.applicationVersion(), profile.zelVersion()),
                 u"my-ppid my-handle 1.2 77"_s);
        const UserProfile anew(m_context.get());
        QCOMPARE(words(anew.ppId(), anew.handle(), anew.applicationVersion(), anew.zelVersion()), u"other other 9 9"_s);
    }

    void writesOnlyTheFieldsThatChange()
    {
        UserProfile profile(ready());
        QVERIFY(profile.requestUpdatePersonalMessage(u"\"y\"\n"_s));
        QVERIFY(profile.requestUpdateStatus(UserStatus::Busy, u"x"_s));
        for (const int status : {0, 1, 3}) // whatever is not busy is available
            QVERIFY(profile.requestUpdateStatus(static_cast<UserStatus::Type>(status), {}));
        QCOMPARE(profile.statusMessage(), u"here"_s); // shown when the service has taken it
        const QByteArray available = changeRequest(R"({"currentStatus":"","showBusy":false})");
        QCOMPARE(asked(), QByteArrayList({changeRequest("{\"personalMessage\":\"\\\"y\\\"\\n\"}"),
                                          changeRequest(R"({"currentStatus":"x","showBusy":true})"), available,
                                          available, available}));
    }

    void carriesAPictureUnderItsType()
    {
        UserProfile profile(ready());
        // Longer than can be counted on the way: it would go out cut. Nobody looks at its bytes.
        QVERIFY(!profile.requestUpdateDisplayPicture(ImageType::Png, QByteArray::fromRawData("x", 0x100000001)));
        const std::pair<ImageType::Type, QByteArray> rows[] = {{ImageType::Png, "image/png"},
                                                               {ImageType::Gif, "image/gif"},
                                                               {ImageType::Bmp, "image/bmp"},
                                                               {ImageType::Unsupported, "image/jpeg"}};
        for (const auto& [type, mimeType] : rows) {
            QVERIFY(profile.requestUpdateDisplayPicture(type, mimeType));
            const QByteArray hash = QCryptographicHash::hash(mimeType, QCryptographicHash::Sha1).toHex();
            const QByteArray change = "{\"avatarId\":\"" + hash + "\",\"avatarMimeType\":\"" + mimeType + "\"}";
            QCOMPARE(asked(), QByteArrayList{changeRequest(change)});
            QCOMPARE(words(profile.displayPictureMimeType(), profile.displayPicture()),
                     words(type == ImageType::Unsupported ? ImageType::Jpg : type, mimeType));
        }
    }

    void showsWhatChangedWhileAccessWasLost()
    {
        const UserProfile profile(ready());
        Heard heard;
        heard.follow(profile, [&] { return profile.displayName(); });
        play(u"state TemporaryError; profile displayName=Anew; state Success"_s);
        QCOMPARE(heard.lines(), QStringList({u"profileChanged | "_s, u"displayNameUpdated Anew | "_s,
                                             u"profileChanged | "_s, u"profileChanged | Anew"_s}));
        QCOMPARE(profile.handle(), u"my-handle"_s);
    }

private:
    static QByteArray changeRequest(const QByteArray& value)
    {
        return "{\"requestListChange\":{\"elements\":[{\"name\":\"platformProfile\",\"value\":" + value +
               "}],\"type\":\"global\"}}";
    }
};

ZEL_TEST(TstUserProfile)
#include "tst_userprofile.moc"
