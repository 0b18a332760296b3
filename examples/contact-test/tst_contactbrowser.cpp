// SPDX-License-Identifier: Apache-2.0
#include "ContactBrowser.h"

#include <zelcore/TestService.h>

#include <QtTest/QTest>

/// Each function has a service of its own, and makes the application's objects after it.
class TstContactBrowser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhoIsThereComesAndLeaves()
    {
        zelcore::TestService service;
        QVERIFY2(service.isRunning(), qPrintable(service.problem()));
        service.addContact(QStringLiteral("Anna"));

        ContactBrowser browser;
        QTRY_COMPARE(browser.names(), QStringList(QStringLiteral("Anna")));
        service.addContact(QStringLiteral("Bert"));
        QTRY_COMPARE(browser.names(), (QStringList{QStringLiteral("Anna"), QStringLiteral("Bert")}));
        QVERIFY(service.uninstallApplication(QStringLiteral("anna"))); // the handle
        QTRY_COMPARE(browser.names(), QStringList(QStringLiteral("Bert")));
        QCOMPARE(service.refusals(), QStringList());
    }

    void showsNobodyWithoutAccess()
    {
        zelcore::TestService service;
        QVERIFY2(service.isRunning(), qPrintable(service.problem()));
        service.addContact(QStringLiteral("Carla"));

        ContactBrowser browser;
        QTRY_COMPARE(browser.names(), QStringList(QStringLiteral("Carla")));
        service.setRegistrationState(QStringLiteral("Expired")); // the user takes the access away
        QTRY_COMPARE(browser.names(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TstContactBrowser)
#include "tst_contactbrowser.moc"
