// SPDX-License-Identifier: Apache-2.0
#include "RawServer.h"

#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <vx/system/InvokeManager.h>
#include <vx/system/InvokeRequest.h>
#include <vx/system/ObjectServer.h>

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using vx::system::InvokeManager;
using vx::system::InvokeRequest;
using vx::system::ObjectServer;

class TstInvokeManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("PPS_ROOT", m_root.path().toLocal8Bit()); }
    void handsTheRequestToItsTarget()
    {
        ObjectServer target;
        QVERIFY(target.listen(QStringLiteral("/pps/services/invocation/app.viewer"), nullptr));
        QSignalSpy received(&target, &ObjectServer::recordReceived);
        QVERIFY(InvokeManager().invoke(request(QStringLiteral("app.viewer"))));
        QTRY_COMPARE(received.size(), 1);
        QCOMPARE(received.first().at(1).toByteArray(),
                 QByteArray("{\"target\":\"app.viewer\",\"action\":\"open\",\"mimeType\":\"text/plain\","
                            "\"data\":\"{\\\"a\\\":\\\"\xC3\xA4\\\"}\\n\"}"));
    }

    void answersFalseWhenNobodyTakesIt()
    {
        const SlogCapture log(3);
        QVERIFY(!InvokeManager().invoke(request(QStringLiteral("app.absent"))));
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.lines().first().startsWith(QStringLiteral("3: cannot invoke \"app.absent\"")));
        QVERIFY(m_root.isValid() && QDir(m_root.path()).mkpath(QStringLiteral("services/invocation")));
        // One that hangs has room for one to wait, and one that went leaves its socket behind.
        RawServer target(m_root.filePath(QStringLiteral("services/invocation/app.hung")), 0);
        QVERIFY(InvokeManager().invoke(request(QStringLiteral("app.hung"))));
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!InvokeManager().invoke(request(QStringLiteral("app.hung"))));
        QVERIFY(timer.elapsed() < 4000);
        target.stop();
        QVERIFY(!InvokeManager().invoke(request(QStringLiteral("app.hung"))));
        QCOMPARE(log.lines().size(), 3);
    }

    void refusesNamesThatAreNoTargets()
    {
        const SlogCapture log(3);
        ObjectServer target;
        QVERIFY(target.listen(QStringLiteral("/pps/services/invocation/app.viewer"), nullptr));
        const QStringList names{QString(),
                                QStringLiteral(".."),
                                QStringLiteral("."),
                                QStringLiteral("../invocation/app.viewer"),
                                QStringLiteral("app.viewer") + QChar(0) + u'x',
                                QString(256, u'x')};
        for (const QString& name : names)
            QVERIFY2(!InvokeManager().invoke(request(name)), qPrintable(name));
        QCOMPARE(log.lines().size(), names.size());
        QVERIFY(target.clients().isEmpty());
    }

private:
    static InvokeRequest request(const QString& target)
    {
        InvokeRequest request;
        request.setTarget(target);
        request.setAction(QStringLiteral("open"));
        request.setMimeType(QStringLiteral("text/plain"));
        request.setData("{\"a\":\"\xC3\xA4\"}\n");
        return request;
    }

    QTemporaryDir m_root;
};

ZEL_TEST(TstInvokeManager)
#include "tst_invokemanager.moc"
