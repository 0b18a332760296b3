// SPDX-License-Identifier: Apache-2.0
#include "RawServer.h"

#include <common/TestMain.h>
#include <common/SlogCapture.h>

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

    void answersFalseWhenNobodyListens()
    {
        const SlogCapture log(3);
        QVERIFY(!InvokeManager().invoke(request(QStringLiteral("app.absent"))));
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.lines().first().startsWith(QStringLiteral("3: cannot invoke \"app.absent\"")));

        RawServer stale(file(QStringLiteral("app.stale")));
        QVERIFY(stale.isListening);
        stale.stop();
        QVERIFY(!InvokeManager().invoke(request(QStringLiteral("app.stale"))));
        QCOMPARE(log.lines().size(), 2);
    }

    void answersFalseWhenTheTargetHangs()
    {
        const SlogCapture log(3);
        const RawServer target(file(QStringLiteral("app.hung")), 0);
        QVERIFY(InvokeManager().invoke(request(QStringLiteral("app.hung"))));
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!InvokeManager().invoke(request(QStringLiteral("app.hung"))));
        QVERIFY(timer.elapsed() < 4000);
        QCOMPARE(log.lines().size(), 1);
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
    QString file(const QString& target) const
    {
        return m_root.filePath(QStringLiteral("services/invocation/") + target);
    }

    QTemporaryDir m_root;
};

ZEL_TEST(TstInvokeManager)
#include "tst_invokemanager.moc"
