// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactJsonAdapter.h>

#include <common/FakePipe.h>

#include <zel/JsonWriter.h>

#include <QTest>

using zelsplib::PlatformContact;
using zelsplib::PlatformContactJsonAdapter;
using Field = PlatformContact::PlatformContactField;

namespace {

using Set = void (*)(PlatformContact&);

constexpr int fieldCount = 14;

QList<int> markedFields(const PlatformContact& contact)
{
    QList<int> marked;
    for (int field = 0; field < fieldCount; ++field) {
        if (contact.isFieldModified(static_cast<Field>(field)))
            marked.append(field);
    }
    return marked;
}

/// Everything that travels, one value after the other.
QStringList contents(const PlatformContact& c)
{
    return {c.getUri(),
            c.getHandle(),
            c.getPpid(),
            c.getAppVersion(),
            c.getDisplayName(),
            c.getPersonalMessage(),
            c.getStatusMessage(),
            c.getAvatarId(),
            c.getAvatarMimeType(),
            c.getTimeZone(),
            c.getCountryCode(),
            QString::number(c.getZelsdkVersion()),
            QString::number(c.getShowBusy()),
            QString::number(c.getZelVersion())};
}

QStringList words(const char* text)
{
    return QString::fromUtf8(text).split(u' ');
}

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
    pipe.addListener(&owner, QStringLiteral("m"),
                     [&take](QObject*, iface::JsonReaderAttribute message) { take(message); });
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
    void isEmptyAtFirst();
    void marksExactlyTheFieldThatIsSet_data();
    void marksExactlyTheFieldThatIsSet();
    void marksEverythingThatIsCreated();
    void keepsCopiesApart();
    void comparesByDataAndNotByMarks();
    void loadsEveryField();
    void keepsWhatIsMissingOrOfAnotherType();
    void tellsAMissingTextFromAnEmptyOne();
    void sharesTextsThatRepeat();
    void writesEveryMemberInOrder();
    void writesOnlyMarkedMembersOfAChange();
    void readsAndWritesTheKey();
};

void TstPlatformContact::isEmptyAtFirst()
{
    const PlatformContact contact;
    QCOMPARE(contents(contact), words("           0 0 0"));
    QVERIFY(contact.getUri().isNull());
    QVERIFY(contact.getAvatarData().isEmpty());
    QVERIFY(!contact.isInitialized());
    QVERIFY(!contact.isModified());
    QCOMPARE(markedFields(contact), QList<int>());
}

void TstPlatformContact::marksExactlyTheFieldThatIsSet_data()
{
    QTest::addColumn<Set>("set");
    QTest::addColumn<int>("field");
    QTest::addColumn<int>("position");
    const auto row = [](const char* name, int field, int position, Set set) {
        QTest::newRow(name) << set << field << position;
    };
    row("uri", 0, 0, [](PlatformContact& c) { c.setUri(QStringLiteral("7")); });
    row("handle", 1, 1, [](PlatformContact& c) { c.setHandle(QStringLiteral("7")); });
    row("ppid", 2, 2, [](PlatformContact& c) { c.setPpid(QStringLiteral("7")); });
    row("appVersion", 3, 3, [](PlatformContact& c) { c.setAppVersion(QStringLiteral("7")); });
    row("displayName", 4, 4, [](PlatformContact& c) { c.setDisplayName(QStringLiteral("7")); });
    row("personalMessage", 5, 5, [](PlatformContact& c) { c.setPersonalMessage(QStringLiteral("7")); });
    row("statusMessage", 6, 6, [](PlatformContact& c) { c.setStatusMessage(QStringLiteral("7")); });
    row("zelsdkVersion", 7, 11, [](PlatformContact& c) { c.setZelsdkVersion(7); });
    row("avatarId", 9, 7, [](PlatformContact& c) { c.setAvatarId(QStringLiteral("7")); });
    row("avatarMimeType", 10, 8, [](PlatformContact& c) { c.setAvatarMimeType(QStringLiteral("7")); });
    row("timeZone", 11, 9, [](PlatformContact& c) { c.setTimeZone(QStringLiteral("7")); });
    row("countryCode", 12, 10, [](PlatformContact& c) { c.setCountryCode(QStringLiteral("7")); });
    row("zelVersion", 13, 13, [](PlatformContact& c) { c.setZelVersion(7); });
}

void TstPlatformContact::marksExactlyTheFieldThatIsSet()
{
    QFETCH(Set, set);
    QFETCH(int, field);
    QFETCH(int, position);
    PlatformContact contact;
    set(contact);
    QCOMPARE(markedFields(contact), QList<int>{field});
    QStringList expected = contents({});
    expected[position] = QStringLiteral("7");
    QCOMPARE(contents(contact), expected);
}

void TstPlatformContact::marksEverythingThatIsCreated()
{
    const PlatformContact contact = numbered();
    QCOMPARE(contents(contact), words("1 2 3 4 5 6 7 8 9 10 11 12 1 14"));
    QCOMPARE(markedFields(contact).size(), fieldCount);
    PlatformContact picture;
    picture.setAvatarData("bytes");
    QCOMPARE(picture.getAvatarData(), QByteArray("bytes"));
    QVERIFY(!picture.isModified());
    PlatformContact busy;
    busy.setShowBusy(false);
    QCOMPARE(markedFields(busy), QList<int>{Field::ShowBusy});
}

void TstPlatformContact::keepsCopiesApart()
{
    PlatformContact first;
    first.setHandle(QStringLiteral("h"));
    PlatformContact second = first;
    second.setHandle(QStringLiteral("other"));
    second.setAvatarData("x");
    second.setShowBusy(true);
    QCOMPARE(first.getHandle(), QStringLiteral("h"));
    QVERIFY(first.getAvatarData().isEmpty());
    QCOMPARE(markedFields(first), QList<int>{Field::Handle});
    QVERIFY(PlatformContact().getHandle().isEmpty());
}

void TstPlatformContact::comparesByDataAndNotByMarks()
{
    QCOMPARE(loaded(R"({"handle":"h"})"), [] {
        PlatformContact c;
        c.setHandle(QStringLiteral("h"));
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

void TstPlatformContact::loadsEveryField()
{
    const PlatformContact contact =
        loaded(R"({"userId":"1","handle":"2","ppid":"3","appVersion":"4","displayName":"5","personalMessage":"6",)"
               R"("currentStatus":"7","avatarId":"8","avatarMimeType":"9","TimeZone":"10","CountryCode":"11",)"
               R"("platformVersion":12,"clientVersion":14,"showBusy":true,"statusMessage":"no","timeZone":"no"})");
    QCOMPARE(contact, numbered());
    QVERIFY(!contact.isModified());
    QVERIFY(contact.isInitialized());
}

void TstPlatformContact::keepsWhatIsMissingOrOfAnotherType()
{
    const PlatformContact contact = loaded(
        R"({"userId":5,"displayName":"new","platformVersion":"12","showBusy":1,"clientVersion":1.5})", numbered());
    PlatformContact expected = numbered();
    expected.setDisplayName(QStringLiteral("new"));
    QCOMPARE(contact, expected);
    QCOMPARE(loaded("[]", numbered()), numbered());
    QCOMPARE(loaded("7", numbered()), numbered());
}

void TstPlatformContact::tellsAMissingTextFromAnEmptyOne()
{
    QVERIFY(loaded("{}").getUri().isNull());
    const PlatformContact contact = loaded(R"({"userId":""})");
    QVERIFY(contact.getUri().isEmpty() && !contact.getUri().isNull());
}

void TstPlatformContact::sharesTextsThatRepeat()
{
    const QByteArray json = R"({"CountryCode":"NZ","TimeZone":"Pacific/Auckland","appVersion":"1.0.0","handle":"h"})";
    const PlatformContact first = loaded(json);
    const PlatformContact second = loaded(json);
    QCOMPARE(second.getCountryCode().constData(), first.getCountryCode().constData());
    QCOMPARE(second.getTimeZone().constData(), first.getTimeZone().constData());
    QCOMPARE(second.getAppVersion().constData(), first.getAppVersion().constData());
    QCOMPARE(loaded(R"({"CountryCode":"CA"})").getCountryCode(), QStringLiteral("CA"));
    QCOMPARE(first.getCountryCode(), QStringLiteral("NZ"));
    // A missing text must not become an empty one on the way.
    loaded(R"({"CountryCode":""})");
    QVERIFY(loaded("{}").getCountryCode().isNull());
}

void TstPlatformContact::writesEveryMemberInOrder()
{
    const auto root = QSharedPointer<zel::JsonWriter>::create(QStringLiteral("m"), zel::JsonWriter::Array, QString());
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

void TstPlatformContact::writesOnlyMarkedMembersOfAChange()
{
    PlatformContact change;
    change.setShowBusy(false);
    change.setStatusMessage(QStringLiteral("\"quoted\"\n\U0001F600"));
    change.setZelVersion(3);
    zel::JsonWriter object(QStringLiteral("m"), QString());
    zelsplib::writeContactMembers(change, object, true);
    QCOMPARE(object.toString().toUtf8(),
             QByteArray("{\"m\":{\"currentStatus\":\"\\\"quoted\\\"\\n\xF0\x9F\x98\x80\",\"showBusy\":false}}"));
}

void TstPlatformContact::readsAndWritesTheKey()
{
    PlatformContactJsonAdapter adapter;
    read(R"({"userId":"u","handle":"h"})", [&adapter](const iface::JsonReaderAttribute& message) {
        const iface::JsonObjectReader json = message.object();
        QCOMPARE(adapter.idJsonToId(json), QStringLiteral("u"));
        const PlatformContact contact = adapter.jsonToElement(json, numbered());
        QCOMPARE(adapter.elementToId(contact), QStringLiteral("u"));
        QCOMPARE(contact.getHandle(), QStringLiteral("h"));
        QCOMPARE(contact.getPpid(), QStringLiteral("3"));
    });
    const auto root = QSharedPointer<zel::JsonWriter>::create(QStringLiteral("m"), QString());
    adapter.idToIdJson(QStringLiteral("k"), root);
    QCOMPARE(root->toString(), QStringLiteral(R"({"m":{"userId":"k"}})"));
}

QTEST_GUILESS_MAIN(TstPlatformContact)
#include "tst_platformcontact.moc"
