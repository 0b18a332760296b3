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

/// What the body of a message makes of a record, as a listener gets it.
PlatformContact loaded(const QByteArray& json, PlatformContact contact = {})
{
    FakePipe pipe;
    QObject owner;
    pipe.addListener(&owner, u"m"_s,
                     [&contact](QObject*, const iface::JsonReaderAttribute& message) { message >> contact; });
    if (!pipe.inject("{\"m\":" + json + '}'))
        qFatal("no message: %s", json.constData());
    return contact;
}

} // namespace

class TstPlatformContact : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAndWritesEveryMember()
    {
        const QByteArray written =
            R"({"userId":"1","handle":"2","ppid":"3","appVersion":"4","displayName":"5","personalMessage":"6",)"
            R"("currentStatus":"7","avatarId":"8","avatarMimeType":"9","TimeZone":"10","CountryCode":"11",)"
            R"("platformVersion":12,"showBusy":true})";
        QByteArray sent = written;
        sent.replace('}', R"(,"clientVersion":14,"statusMessage":"no","timeZone":"no"})");
        const PlatformContact contact = loaded(sent);
        QCOMPARE(contact, numbered());
        QVERIFY(!contact.isModified() && contact.isInitialized());
        const auto root = QSharedPointer<zel::JsonWriter>::create(u"m"_s, zel::JsonWriter::Array, QString());
        PlatformContactJsonAdapter().elementToJson(contact, root);
        PlatformContactJsonAdapter().elementToJson({}, root);
        QCOMPARE(root->toString().toUtf8(),
                 R"({"m":[)" + written +
                     R"(,{"userId":"","handle":"","ppid":"","appVersion":"","displayName":"","personalMessage":"",)"
                     R"("currentStatus":"","avatarId":"","avatarMimeType":"","TimeZone":"","CountryCode":"",)"
                     R"("platformVersion":0,"showBusy":false}]})");
    }

    void comparesByDataAndNotByMarks()
    {
        PlatformContact marked;
        marked.setHandle(u"h"_s);
        QCOMPARE(loaded(R"({"handle":"h"})"), marked);
        // Each member on its own tells two records apart.
        for (QByteArray member : QByteArray("userId handle ppid appVersion displayName personalMessage currentStatus "
                                            "avatarId avatarMimeType TimeZone CountryCode")
                                     .split(' '))
            QVERIFY2(loaded("{\"" + member + "\":\"x\"}", numbered()) != numbered(), member);
        for (const char* other : {R"({"platformVersion":99})", R"({"clientVersion":99})", R"({"showBusy":false})"})
            QVERIFY2(loaded(other, numbered()) != numbered(), other);
        PlatformContact picture = numbered();
        picture.setAvatarData("x");
        QVERIFY(QVariant::fromValue(numbered()) == QVariant::fromValue(numbered()));
        QVERIFY(QVariant::fromValue(picture) != QVariant::fromValue(numbered()));
    }

    void keepsWhatIsMissingOrOfAnotherType()
    {
        const PlatformContact contact = loaded(
            R"({"userId":5,"handle":"Zo\u00eb \ud83d\ude00","displayName":"new","personalMessage":"","platformVersion":"12",)"
            R"("showBusy":1,"clientVersion":1.5})",
            numbered());
        PlatformContact expected = numbered();
        expected.setHandle(u"Zo\u00eb \U0001F600"_s);
        expected.setDisplayName(u"new"_s);
        expected.setPersonalMessage({});
        QCOMPARE(contact, expected);
        QCOMPARE(loaded(R"({"handle":"first","handle":"second"})").getHandle(), u"first"_s);
        for (const char* none : {"[]", "5", R"({"clientVersion":2147483648})"})
            QCOMPARE(loaded(none, numbered()), numbered());
        // A missing text is none, and an empty one is empty.
        QVERIFY(loaded("{}").getUri().isNull());
        QVERIFY(loaded(R"({"userId":""})").getUri().isEmpty() && !loaded(R"({"userId":""})").getUri().isNull());
    }
};

ZEL_TEST(TstPlatformContact)
#include "tst_platformcontact.moc"
