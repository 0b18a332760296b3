// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactJsonAdapter.h>

#include <common/FakePipe.h>
#include <common/TestMain.h>

#include <zel/JsonWriter.h>

using namespace Qt::StringLiterals;

using zelsplib::PlatformContact;
using zelsplib::PlatformContactJsonAdapter;
namespace {

PlatformContact numbered()
{
    const auto s = [](int i) { return QString::number(i); };
    return PlatformContact::create(s(1), s(2), s(3), s(4), s(5), s(6), s(7), s(8), s(9), s(10), s(11), 12, true, 14);
}

/// Hands the body of a message to `take`, as a listener gets it.
template <typename Take>
void read(const QByteArray& json, Take take)
{
    FakePipe pipe;
    QObject owner;
    pipe.addListener(&owner, u"m"_s, [&take](QObject*, iface::JsonReaderAttribute message) { take(message); });
    QVERIFY(pipe.inject("{\"m\":" + json + '}'));
}

PlatformContact loaded(const QByteArray& json, PlatformContact contact = {})
{
    read(json, [&contact](const iface::JsonReaderAttribute& message) { message >> contact; });
    return contact;
}

} // namespace

class TstPlatformContact : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comparesByDataAndNotByMarks()
    {
        QCOMPARE(loaded(R"({"handle":"h"})"), [] {
            PlatformContact c;
            c.setHandle(u"h"_s);
            return c;
        }());
        // Each field on its own tells two records apart.
        const char* changes[] = {R"({"userId":"x"})",        R"({"handle":"x"})",      R"({"ppid":"x"})",
                                 R"({"appVersion":"x"})",    R"({"displayName":"x"})", R"({"personalMessage":"x"})",
                                 R"({"currentStatus":"x"})", R"({"avatarId":"x"})",    R"({"avatarMimeType":"x"})",
                                 R"({"TimeZone":"x"})",      R"({"CountryCode":"x"})", R"({"platformVersion":99})",
                                 R"({"clientVersion":99})",  R"({"showBusy":false})"};
        for (const char* change : changes)
            QVERIFY2(loaded(change, numbered()) != numbered(), change);
        PlatformContact picture = numbered();
        picture.setAvatarData("x");
        QVERIFY(picture != numbered());
        QVERIFY(QVariant::fromValue(numbered()) == QVariant::fromValue(numbered()));
        QVERIFY(QVariant::fromValue(picture) != QVariant::fromValue(numbered()));
    }

    void loadsEveryField()
    {
        const PlatformContact contact =
            loaded(R"({"userId":"1","handle":"2","ppid":"3","appVersion":"4","displayName":"5","personalMessage":"6",)"
                   R"("currentStatus":"7","avatarId":"8","avatarMimeType":"9","TimeZone":"10","CountryCode":"11",)"
                   R"("platformVersion":12,"clientVersion":14,"showBusy":true,"statusMessage":"no","timeZone":"no"})");
        QCOMPARE(contact, numbered());
        QVERIFY(!contact.isModified());
        QVERIFY(contact.isInitialized());
    }

    void keepsWhatIsMissingOrOfAnotherType()
    {
        const PlatformContact contact = loaded(
            R"({"userId":5,"displayName":"new","platformVersion":"12","showBusy":1,"clientVersion":1.5})", numbered());
        PlatformContact expected = numbered();
        expected.setDisplayName(u"new"_s);
        QCOMPARE(contact, expected);
        QCOMPARE(loaded(R"({"handle":"first","handle":"second"})").getHandle(), u"first"_s);
        QCOMPARE(loaded("[]", numbered()), numbered());
        QCOMPARE(loaded("7", numbered()), numbered());
    }

    void tellsAMissingTextFromAnEmptyOne()
    {
        QVERIFY(loaded("{}").getUri().isNull());
        const PlatformContact contact = loaded(R"({"userId":""})");
        QVERIFY(contact.getUri().isEmpty() && !contact.getUri().isNull());
    }

    void sharesTextsThatRepeat()
    {
        const QByteArray json =
            R"({"CountryCode":"NZ","TimeZone":"Pacific/Auckland","appVersion":"1.0.0","handle":"h"})";
        const PlatformContact first = loaded(json);
        const PlatformContact second = loaded(json);
        QCOMPARE(second.getCountryCode().constData(), first.getCountryCode().constData());
        QCOMPARE(second.getTimeZone().constData(), first.getTimeZone().constData());
        QCOMPARE(second.getAppVersion().constData(), first.getAppVersion().constData());
        QCOMPARE(loaded(R"({"CountryCode":"CA"})").getCountryCode(), u"CA"_s);
        QCOMPARE(first.getCountryCode(), u"NZ"_s);
        // A missing text must not become an empty one on the way.
        loaded(R"({"CountryCode":""})");
        QVERIFY(loaded("{}").getCountryCode().isNull());
    }

    void sharesTheIdThatItWasAskedBy()
    {
        PlatformContactJsonAdapter adapter;
        const QString ids[] = {QString::number(1), QString::number(2), QString::number(3)};
        const auto root = QSharedPointer<zel::JsonWriter>::create(u"m"_s, zel::JsonWriter::Array, QString());
        for (const QString& id : ids)
            adapter.idToIdJson(id, root->addChild({}, zel::JsonWriter::Object));
        const auto uri = [&adapter](const QByteArray& json) {
            PlatformContact contact;
            read(json, [&](const iface::JsonReaderAttribute& message) {
                contact = adapter.jsonToElement(message.object(), PlatformContact());
            });
            return contact.getUri();
        };
        QCOMPARE(uri(R"({"userId":"1"})").constData(), ids[0].constData());
        QCOMPARE(uri(R"({"userId":"2"})").constData(), ids[1].constData());
        QCOMPARE(uri(R"({"userId":"unasked"})"), u"unasked"_s);
        QCOMPARE(uri("{}"), QString());
        QCOMPARE(uri(R"({"userId":"3"})"), ids[2]);
    }

    void writesEveryMemberInOrder()
    {
        const auto root = QSharedPointer<zel::JsonWriter>::create(u"m"_s, zel::JsonWriter::Array, QString());
        PlatformContact contact = numbered();
        contact.setAvatarData("picture");
        PlatformContactJsonAdapter().elementToJson(contact, root);
        PlatformContactJsonAdapter().elementToJson({}, root);
        QCOMPARE(root->toString().toUtf8(),
                 QByteArray(R"({"m":[{"userId":"1","handle":"2","ppid":"3","appVersion":"4","displayName":"5",)"
                            R"("personalMessage":"6","currentStatus":"7","avatarId":"8","avatarMimeType":"9",)"
                            R"("TimeZone":"10","CountryCode":"11","platformVersion":12,"showBusy":true},)"
                            R"({"userId":"","handle":"","ppid":"","appVersion":"","displayName":"",)"
                            R"("personalMessage":"","currentStatus":"","avatarId":"","avatarMimeType":"",)"
                            R"("TimeZone":"","CountryCode":"","platformVersion":0,"showBusy":false}]})"));
    }

    void writesOnlyMarkedMembersOfAChange()
    {
        PlatformContact change;
        change.setShowBusy(false);
        change.setStatusMessage(u"\"quoted\"\n\U0001F600"_s);
        change.setZelVersion(3);
        zel::JsonWriter object(u"m"_s, QString());
        zelsplib::writeContactMembers(change, object, true);
        QCOMPARE(object.toString().toUtf8(),
                 QByteArray("{\"m\":{\"currentStatus\":\"\\\"quoted\\\"\\n\xF0\x9F\x98\x80\",\"showBusy\":false}}"));
    }
};

ZEL_TEST(TstPlatformContact)
#include "tst_platformcontact.moc"
