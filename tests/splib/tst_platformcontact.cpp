// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactJsonAdapter.h>

#include <common/FakePipe.h>
#include <common/TestMain.h>

#include <zel/JsonWriter.h>

using namespace Qt::StringLiterals;

using namespace zelsplib;

namespace {

PlatformContact numbered()
{
    const auto s = [](int i) { return QString::number(i); };
    return PlatformContact::create(s(1), s(2), s(3), s(4), s(5), s(6), s(7), s(8), s(9), s(10), s(11), 12, true, 14);
}

/// One that has to be asked for each member, as where a platform's decoder shows none.
struct ReticentSource : zel::PpsJsonSource
{
    using PpsJsonSource::PpsJsonSource;
    bool visitMembers(void*, iface::JsonMemberVisitor&) override { return false; }
};

template <typename Source>
PlatformContact loadedFrom(const QByteArray& json, PlatformContact contact)
{
    const ReadMessage<Source> message("{\"m\":" + json + '}');
    message.root["m"] >> contact;
    return contact;
}

/// What is made of a record, whichever way it is read.
PlatformContact loaded(const QByteArray& json, const PlatformContact& contact = {})
{
    const PlatformContact shown = loadedFrom<zel::PpsJsonSource>(json, contact);
    return loadedFrom<ReticentSource>(json, contact) == shown ? shown : PlatformContact();
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
        PlatformContact contact = loaded(sent);
        QCOMPARE(contact, numbered()); // which is marked, and this is not
        QVERIFY(!contact.isModified() && contact.isInitialized());
        for (int field = 0; field < PlatformContact::FieldCount; ++field)
            QVERIFY(numbered().isFieldModified(PlatformContact::PlatformContactField(field)));
        // Each member on its own tells two records apart, and so does the picture.
        for (const QByteArray& member : sent.mid(1).chopped(1).split(','))
            QVERIFY2((loaded('{' + member + '}') != PlatformContact()) == !member.endsWith("\"no\""), member);
        PlatformContact withPicture = contact;
        withPicture.setAvatarData("x");
        QVERIFY(QVariant::fromValue(withPicture) != QVariant::fromValue(contact));
        const auto root = QSharedPointer<zel::JsonWriter>::create(u"m"_s, zel::JsonWriter::Array, QString());
        contact.setHandle(contact.getHandle()); // marks it, which is of no matter here
        PlatformContactJsonAdapter().elementToJson(contact, root);
        QCOMPARE(root->toString().toUtf8(), "{\"m\":[" + written + "]}");
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
        QCOMPARE(loaded(R"({"clientVersion":2147483647})").getZelVersion(), 2147483647);
        for (const char* none : {"[]", "5", R"({"clientVersion":2147483648})"})
            QCOMPARE(loaded(none, numbered()), numbered());
        // A missing text is none, and an empty one is empty.
        QVERIFY(loaded("{}").getUri().isNull());
        QVERIFY(loaded(R"({"userId":""})").getUri().isEmpty() && !loaded(R"({"userId":""})").getUri().isNull());
    }
};

ZEL_TEST(TstPlatformContact)
#include "tst_platformcontact.moc"
