// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/ApplicationPermissions.h>

using namespace vx::platform::zel;

class TstApplicationPermissions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheRecord()
    {
        QVERIFY(m_desk.becomeAllowed());
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

private:
    static bool allows(const ApplicationPermissions& permissions, int permission)
    {
        return permissions.permissionValue(static_cast<Permission::Type>(permission)) == PermissionValue::Allowed;
    }

    Desk m_desk;
};

QTEST_GUILESS_MAIN(TstApplicationPermissions)
#include "tst_applicationpermissions.moc"
