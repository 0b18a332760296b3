// SPDX-License-Identifier: Apache-2.0
#include "ContactBrowser.h"

#include <zelcore/TestService.h>

#include <QtTest/QTest>

using namespace Qt::StringLiterals;

/// Each function has a service of its own, and makes the application's objects after it.
class TstContactBrowser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhoIsThereComesAndLeaves()
    {
        zelcore::TestService service;
        QVERIFY2(service.isRunning(), qPrintable(service.problem()));
        service.addContact(u"Anna"_s);

        ContactBrowser browser;
        QTRY_COMPARE(browser.names(), QStringList(u"Anna"_s));
        service.addContact(u"Bert"_s);
        QTRY_COMPARE(browser.names(), (QStringList{u"Anna"_s, u"Bert"_s}));
        QVERIFY(service.uninstallApplication(u"anna"_s)); // the handle
        QTRY_COMPARE(browser.names(), QStringList(u"Bert"_s));
        QCOMPARE(service.refusals(), QStringList());
    }

    void showsNobodyWithoutAccess()
    {
        zelcore::TestService service;
        QVERIFY2(service.isRunning(), qPrintable(service.problem()));
        service.addContact(u"Carla"_s);

        ContactBrowser browser;
        QTRY_COMPARE(browser.names(), QStringList(u"Carla"_s));
        service.setRegistrationState(u"Expired"_s); // the user takes the access away
        QTRY_COMPARE(browser.names(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TstContactBrowser)
#include "tst_contactbrowser.moc"
