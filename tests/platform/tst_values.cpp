// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <vx/platform/zel/Permission.h>
#include <vx/platform/zel/PermissionValue.h>

#include <QtCore/QSet>

namespace {

template <typename... Values>
QString written(const Values&... values)
{
    QString text;
    QDebug stream(&text);
    (stream << ... << values);
    return text.trimmed();
}

} // namespace

/// What applications pass about: contacts, items and enumerations.
class TstValues : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void writeThemselves()
    {
        QCOMPARE(written(RegistrationState::MaxAppsReached, EcoIdStatus::ContactExists, UserStatus::Busy,
                         Permission::ProfileUpdatesAllowed, PermissionValue::Denied, ImageType::Png),
                 u"MaxAppsReached ContactExists Busy ProfileUpdatesAllowed Denied Png"_s);
        QCOMPARE(written(static_cast<RegistrationState::Type>(99), 1), u"RegistrationState(99) 1"_s);
        QCOMPARE(written(Contact(), ProfileBoxItem()), u"Contact() ProfileBoxItem()"_s);
    }

    void sayWhatAPictureIs()
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

    void moveAndHash()
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
};

ZEL_TEST(TstValues)
#include "tst_values.moc"
