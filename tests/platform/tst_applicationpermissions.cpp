// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/ApplicationPermissions.h>

using namespace vx::platform::zel;

class TstApplicationPermissions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void staysDeniedWhenMadeBeforeRegistration();
    void followsTheRecord();
    void deniesWithoutAccess();

private:
    static bool allows(const ApplicationPermissions& permissions, int permission)
    {
        return permissions.permissionValue(static_cast<Permission::Type>(permission)) == PermissionValue::Allowed;
    }

    Desk m_desk;
};

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

void TstApplicationPermissions::followsTheRecord()
{
    Context context(QUuid::createUuid());
    ApplicationPermissions permissions(&context);
    for (const bool box : {false, true}) {
        for (const bool invitations : {false, true}) {
            m_desk.changePermission(QByteArray("{\"showAppBox\":") + (box ? "true" : "false") +
                                    ",\"zelInvites\":" + (invitations ? "true" : "false") + "}");
            QVERIFY(m_desk.settle());
            QCOMPARE(allows(permissions, Permission::ProfileUpdatesAllowed), box);
            QCOMPARE(allows(permissions, Permission::ContactInvitationsAllowed), invitations);
        }
    }
    for (const int number : {-1, 0, 3, 1000}) // no permissions
        QVERIFY2(!allows(permissions, number), qPrintable(QString::number(number)));
}

void TstApplicationPermissions::deniesWithoutAccess()
{
    QVERIFY(!allows(ApplicationPermissions(nullptr), Permission::ProfileUpdatesAllowed));
    auto context = std::make_unique<Context>(QUuid::createUuid());
    ApplicationPermissions permissions(context.get());
    m_desk.changeState(QStringLiteral("TemporaryError"));
    QVERIFY(m_desk.settle());
    QVERIFY(!allows(permissions, Permission::ProfileUpdatesAllowed));
    m_desk.changeState(QStringLiteral("Success"));
    QVERIFY(m_desk.settle());
    QVERIFY(allows(permissions, Permission::ProfileUpdatesAllowed));
    context.reset();
    QVERIFY(!allows(permissions, Permission::ProfileUpdatesAllowed));
}

QTEST_GUILESS_MAIN(TstApplicationPermissions)
#include "tst_applicationpermissions.moc"
