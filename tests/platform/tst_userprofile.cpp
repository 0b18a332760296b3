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
            "displayPictureMimeType=Png displayPicture=first picture applicationVersion=1.2 "
            "zelVersion=77 sdkVersion=200"_s);
        Heard heard; // each change once and in order, and each value is shown before it is announced
        heard.note(profile, &UserProfile::displayNameUpdated, u"name"_s, [&] { return profile.displayName(); });
        heard.note(profile, &UserProfile::personalMessageUpdated, u"message"_s,
                   [&] { return profile.personalMessage(); });
        heard.note(profile, &UserProfile::statusUpdated, u"status"_s,
                   [&] { return words(profile.status(), profile.statusMessage()); });
        m_desk->changeProfile(R"({"showBusy":true,"currentStatus":"out","personalMessage":"Bye","displayName":"A"})");
        m_desk->changeProfile(R"({"showBusy":true,"currentStatus":"out","personalMessage":"Bye","displayName":"A"})");
        m_desk->changeProfile(R"({"currentStatus":"far out"})");
        m_desk->changeProfile(R"({"ppid":"other","handle":"other","appVersion":"9","clientVersion":9})");
        QVERIFY(m_desk->settle());
        QCOMPARE(heard.lines(), QStringList({u"name A | A"_s, u"message Bye | Bye"_s, u"status Busy out | Busy out"_s,
                                             u"status Busy far out | Busy far out"_s}));
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
        const QByteArray available = changeRequest(R"({"currentStatus":"","showBusy":false})");
        QCOMPARE(m_desk->written(), QByteArrayList({changeRequest("{\"personalMessage\":\"\\\"y\\\"\\n\"}"),
                                                    changeRequest(R"({"currentStatus":"x","showBusy":true})"),
                                                    available, available, available}));
        QCOMPARE(profile.statusMessage(), u"here"_s); // shown when the service has taken it
    }

    void carriesAPictureUnderItsType()
    {
        UserProfile profile(ready());
        Heard heard;
        heard.note(profile, &UserProfile::displayPictureUpdated, QString(),
                   [&] { return words(profile.displayPictureMimeType(), profile.displayPicture()); });
        // Longer than can be counted on the way: it would go out cut. Nobody looks at its bytes.
        QVERIFY(!profile.requestUpdateDisplayPicture(ImageType::Png, QByteArray::fromRawData("x", 0x100000001)));
        const std::tuple<ImageType::Type, QByteArray, QString> rows[] = {
            {ImageType::Png, "image/png", u"Png"_s},
            {ImageType::Gif, "image/gif", u"Gif"_s},
            {ImageType::Bmp, "image/bmp", u"Bmp"_s},
            {ImageType::Unsupported, "image/jpeg", u"Jpg"_s}};
        for (const auto& [type, mimeType, shownType] : rows) {
            QVERIFY(profile.requestUpdateDisplayPicture(type, mimeType));
            const QByteArray hash = QCryptographicHash::hash(mimeType, QCryptographicHash::Sha1).toHex();
            const QByteArray change = "{\"avatarId\":\"" + hash + "\",\"avatarMimeType\":\"" + mimeType + "\"}";
            QCOMPARE(m_desk->written(), QByteArrayList{changeRequest(change)});
            m_desk->changeProfile(change);
            QVERIFY(m_desk->settle());
            QCOMPARE(heard.take(), QStringList{u"%1 %2 | %1 %2"_s.arg(shownType, QString::fromLatin1(mimeType))});
        }
    }

    void showsWhatChangedWhileAccessWasLost()
    {
        const UserProfile profile(ready());
        Heard heard;
        heard.note(profile, &UserProfile::profileChanged, u"changed"_s, [&] { return profile.displayName(); });
        m_desk->changeState(u"TemporaryError"_s);
        m_desk->changeProfile(R"({"displayName":"Changed meanwhile"})");
        m_desk->changeState(u"Success"_s);
        QVERIFY(m_desk->settle());
        QCOMPARE(heard.lines(), QStringList({u"changed | "_s, u"changed | "_s, u"changed | Changed meanwhile"_s}));
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
