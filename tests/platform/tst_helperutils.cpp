// SPDX-License-Identifier: Apache-2.0
#include <platform/context/ApplicationDelegate.h>
#include <platform/context/HelperUtils.h>

#include <QtCore/QMetaEnum>
#include <QtTest/QTest>

using namespace vx::platform::zel;
using zelsplib::Avatar;

class TstHelperUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsRegistrationStates_data();
    void readsRegistrationStates();
    void namesTheRegistrationStatesForQueuedConnections();
    void readsAndWritesImageTypes_data();
    void readsAndWritesImageTypes();
    void writesTypesOutsideTheTable();
    void convertsImageTypesByNumber();
    void convertsPicturesByFormat_data();
    void convertsPicturesByFormat();
    void readsEcoIdStates_data();
    void readsEcoIdStates();
    void writesUuidsTheWayTheServiceTakesThem();
};

void TstHelperUtils::readsRegistrationStates_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("state");
    const std::pair<const char*, int> words[] = {
        {"Success", 0},
        {"Unknown", 1},
        {"Unregistered", 2},
        {"Pending", 3},
        {"BlockedByUser", 4},
        {"BlockedByTov", 5},
        {"NoDataConnection", 6},
        {"UnexpectedError", 7},
        {"InvalidUuid", 8},
        {"TemporaryError", 9},
        {"MaximumUsersReached", 10},
        {"Expired", 11},
        {"CancelledByUser", 12},
        {"MaximumAppsReached", 13},
        {"ZelDisabled", 14},
        {"BlockedEnterprisePerimeter", 15},
        // Near misses, enumerators that are no words of the service, and none at all.
        {"Allowed", 1},
        {"BlockedByTOV", 1},
        {"success", 1},
        {"Success ", 1},
        {"MaxAppsReached", 1},
        {"MaxDownloadsReached", 1},
        {"", 1}};
    for (const auto& [word, state] : words)
        QTest::addRow("'%s'", word) << QString::fromLatin1(word) << state;
}

void TstHelperUtils::readsRegistrationStates()
{
    QFETCH(QString, word);
    QTEST(static_cast<int>(HelperUtils::registrationStateFromString(word)), "state");
}

void TstHelperUtils::namesTheRegistrationStatesForQueuedConnections()
{
    const auto states = QMetaEnum::fromType<RegistrationState::Type>();
    QCOMPARE(states.keyCount(), 16);
    QCOMPARE(states.valueToKey(15), "BlockedEnterprisePerimeter");
    QCOMPARE(QMetaType::fromType<RegistrationState::Type>().name(), "vx::platform::zel::RegistrationState::Type");
}

void TstHelperUtils::readsAndWritesImageTypes_data()
{
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<ImageType::Type>("type");
    QTest::newRow("jpeg") << QStringLiteral("image/jpeg") << ImageType::Jpg;
    QTest::newRow("png") << QStringLiteral("image/png") << ImageType::Png;
    QTest::newRow("gif") << QStringLiteral("image/gif") << ImageType::Gif;
    QTest::newRow("bmp") << QStringLiteral("image/bmp") << ImageType::Bmp;
}

void TstHelperUtils::readsAndWritesImageTypes()
{
    QFETCH(QString, mimeType);
    QFETCH(ImageType::Type, type);
    QCOMPARE(HelperUtils::imageTypeFromString(mimeType), type);
    QCOMPARE(HelperUtils::imageTypeToString(type), mimeType);
    QCOMPARE(HelperUtils::imageTypeFromString(mimeType.toUpper()), ImageType::Unsupported);
}

void TstHelperUtils::writesTypesOutsideTheTable()
{
    QCOMPARE(HelperUtils::imageTypeToString(ImageType::Unsupported), QStringLiteral("image/jpeg"));
    QCOMPARE(HelperUtils::imageTypeToString(static_cast<ImageType::Type>(5)), QString());
    QCOMPARE(HelperUtils::imageTypeFromString(QString()), ImageType::Unsupported);
}

void TstHelperUtils::convertsImageTypesByNumber()
{
    for (int number = 0; number <= ImageType::Bmp; ++number) {
        QCOMPARE(static_cast<int>(HelperUtils::convertImageType(static_cast<ImageType::Type>(number))), number);
        QCOMPARE(static_cast<int>(HelperUtils::convertImageType(static_cast<Avatar::ImageType>(number))), number);
    }
}

void TstHelperUtils::convertsPicturesByFormat_data()
{
    QTest::addColumn<ImageType::Type>("type");
    QTest::addColumn<int>("travelsAs");
    QTest::addColumn<ImageType::Type>("comesBackAs");
    QTest::newRow("unsupported") << ImageType::Unsupported << 0 << ImageType::Jpg;
    QTest::newRow("jpeg") << ImageType::Jpg << 0 << ImageType::Jpg;
    QTest::newRow("png") << ImageType::Png << 1 << ImageType::Png;
    QTest::newRow("gif") << ImageType::Gif << 2 << ImageType::Gif;
    QTest::newRow("bmp") << ImageType::Bmp << 3 << ImageType::Bmp;
    QTest::newRow("beyond") << static_cast<ImageType::Type>(5) << 0 << ImageType::Jpg;
}

void TstHelperUtils::convertsPicturesByFormat()
{
    QFETCH(ImageType::Type, type);
    const Avatar::ImageType avatarType = HelperUtils::avatarTypeForPicture(type);
    QTEST(static_cast<int>(avatarType), "travelsAs");
    QTEST(HelperUtils::pictureTypeForAvatar(avatarType), "comesBackAs");
}

void TstHelperUtils::readsEcoIdStates_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<EcoIdStatus::Type>("status");
    QTest::newRow("unknown") << QStringLiteral("Unknown") << EcoIdStatus::Unknown;
    QTest::newRow("contact") << QStringLiteral("ContactExists") << EcoIdStatus::ContactExists;
    QTest::newRow("pending") << QStringLiteral("PendingContactExists") << EcoIdStatus::PendingContactInviteExists;
    QTest::newRow("the enumerator is no word") << QStringLiteral("PendingContactInviteExists") << EcoIdStatus::Unknown;
    QTest::newRow("empty") << QString() << EcoIdStatus::Unknown;
}

void TstHelperUtils::readsEcoIdStates()
{
    QFETCH(QString, word);
    QTEST(HelperUtils::ecoIdStatusFromString(word), "status");
}

void TstHelperUtils::writesUuidsTheWayTheServiceTakesThem()
{
    const QUuid uuid(QStringLiteral("{ABCDEF01-2345-6789-ABCD-EF0123456789}"));
    QCOMPARE(ApplicationDelegate::quuidToZELConformantString(uuid),
             QStringLiteral("abcdef01-2345-6789-abcd-ef0123456789"));
}

QTEST_GUILESS_MAIN(TstHelperUtils)
#include "tst_helperutils.moc"
