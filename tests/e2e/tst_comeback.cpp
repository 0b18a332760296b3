// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>

#include <zelcore/Simulator.h>

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

/// A service that goes away and comes back, as its application sees it. One process, one connection.
class TstComeback : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhoLeftMeanwhile()
    {
        zelcore::Simulator service;
        service.generateContacts(30, 1);
        QVERIFY(service.start());
        QVERIFY(service.exportRoot());

        Context context(QUuid::createUuid());
        connect(&context, &Context::registrationStateUpdated, this, [&](RegistrationState::Type state) {
            if (state == RegistrationState::Unregistered)
                context.requestRegisterApplication();
        });
        std::unique_ptr<ContactService> contacts;
        QStringList complete;
        whenReady(&context, this, [&] {
            contacts = std::make_unique<ContactService>(&context);
            connect(contacts.get(), &ContactService::completeChanged, this,
                    [&] { complete += u"%1 of %2"_s.arg(contacts->isComplete()).arg(contacts->contactCount()); });
            QVERIFY(!contacts->isComplete());
        });
        QTRY_COMPARE(complete, QStringList{u"1 of 30"_s});

        QSignalSpy resent(contacts.get(), &ContactService::contactListResent);
        QSignalSpy lists(contacts.get(), &ContactService::contactListUpdated);
        service.stop(); // and comes back as it was
        QVERIFY(service.start());
        QTRY_COMPARE(resent.size(), 1);
        QCOMPARE(lists.size(), 0);

        service.stop();
        const QString gone = service.contacts().at(7).handle;
        QVERIFY(service.removeContact(gone));
        QVERIFY(service.start());
        QTRY_COMPARE(resent.size(), 2);
        QStringList left;
        for (const Contact& contact : contacts->contacts()) {
            if (!contacts->hasApplication(contact.handle()))
                left += contact.handle();
        }
        QCOMPARE(left, QStringList{gone});
        QCOMPARE(contacts->contact(gone).handle(), gone); // until the list is read anew
        QVERIFY(contacts->refresh());
        QCOMPARE(lists.size(), 1);
        QCOMPARE(contacts->contactCount(), 29);
        QCOMPARE(contacts->contact(gone), Contact());
        QVERIFY(!contacts->hasApplication(gone));

        // Of a single one who leaves it says the same.
        QSignalSpy removals(contacts.get(), &ContactService::applicationDisabled);
        const QString uninstaller = service.contacts().at(3).handle;
        QVERIFY(contacts->hasApplication(uninstaller));
        QVERIFY(service.uninstallApplication(uninstaller));
        QTRY_COMPARE(removals.size(), 1);
        QVERIFY(!contacts->hasApplication(uninstaller));
        QCOMPARE(contacts->contactCount(), 29);
        QCOMPARE(complete.size(), 1);
    }
};

ZEL_TEST(TstComeback)
#include "tst_comeback.moc"
