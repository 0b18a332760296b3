// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/ApplicationPermissions.h>

using namespace vx::platform::zel;

class TstApplicationPermissions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deniesEverythingWithoutAContext();
    void staysDeniedWhenMadeBeforeRegistration();
    void followsTheRecord_data();
    void followsTheRecord();
    void deniesWhatIsNoPermission();
    void deniesWhileAccessIsLost();
    void deniesAfterItsContextIsGone();

private:
    static bool allows(const ApplicationPermissions& permissions, int permission)
    {
        return permissions.permissionValue(static_cast<Permission::Type>(permission)) == PermissionValue::Allowed;
    }

    Desk m_desk;
};

void TstApplicationPermissions::deniesEverythingWithoutAContext()
{
    ApplicationPermissions permissions(nullptr);
    QVERIFY(!allows(permissions, Permission::ProfileUpdatesAllowed));
    QVERIFY(!allows(permissions, Permission::ContactInvitationsAllowed));
}

void TstApplicationPermissions::staysDeniedWhenMadeBeforeRegistration()
{
    m_desk.permission() = ScriptedCore::json(R"({"showAppBox":true,"zelInvites":true})");
    Context context(QUuid::createUuid());
    ApplicationPermissions early(&context);
    QVERIFY(m_desk.becomeAllowed());
    QVERIFY(!allows(early, Permission::ProfileUpdatesAllowed));
    QVERIFY(!allows(early, Permission::ContactInvitationsAllowed));
    QVERIFY(allows(ApplicationPermissions(&context), Permission::ProfileUpdatesAllowed));
}

void TstApplicationPermissions::followsTheRecord_data()
{
    QTest::addColumn<bool>("box");
    QTest::addColumn<bool>("invitations");
    QTest::newRow("both") << true << true;
    QTest::newRow("only the box") << true << false;
    QTest::newRow("only invitations") << false << true;
    QTest::newRow("neither") << false << false;
}

void TstApplicationPermissions::followsTheRecord()
{
    QFETCH(bool, box);
    QFETCH(bool, invitations);
    Context context(QUuid::createUuid());
    ApplicationPermissions permissions(&context);
    m_desk.changePermission(QByteArray("{\"showAppBox\":") + (box ? "true" : "false") +
                            ",\"zelInvites\":" + (invitations ? "true" : "false") + "}");
    QVERIFY(m_desk.settle());
    QCOMPARE(allows(permissions, Permission::ProfileUpdatesAllowed), box);
    QCOMPARE(allows(permissions, Permission::ContactInvitationsAllowed), invitations);
}

void TstApplicationPermissions::deniesWhatIsNoPermission()
{
    m_desk.changePermission(R"({"showAppBox":true,"zelInvites":true})");
    QVERIFY(m_desk.settle());
    Context context(QUuid::createUuid());
    ApplicationPermissions permissions(&context);
    for (int number : {-1, 0, 3, 1000})
        QVERIFY2(!allows(permissions, number), qPrintable(QString::number(number)));
}

void TstApplicationPermissions::deniesWhileAccessIsLost()
{
    Context context(QUuid::createUuid());
    ApplicationPermissions permissions(&context);
    m_desk.changeState(QStringLiteral("TemporaryError"));
    QVERIFY(m_desk.settle());
    QVERIFY(!allows(permissions, Permission::ProfileUpdatesAllowed));
    m_desk.changeState(QStringLiteral("Success"));
    QVERIFY(m_desk.settle());
    QVERIFY(allows(permissions, Permission::ProfileUpdatesAllowed));
}

void TstApplicationPermissions::deniesAfterItsContextIsGone()
{
    auto context = std::make_unique<Context>(QUuid::createUuid());
    ApplicationPermissions permissions(context.get());
    QVERIFY(allows(permissions, Permission::ProfileUpdatesAllowed));
    context.reset();
    QVERIFY(!allows(permissions, Permission::ProfileUpdatesAllowed));
}

QTEST_GUILESS_MAIN(TstApplicationPermissions)
#include "tst_applicationpermissions.moc"
