// SPDX-License-Identifier: Apache-2.0
#include <common/RawServer.h>
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <vx/system/InvokeManager.h>
#include <vx/system/InvokeRequest.h>
#include <vx/system/ObjectServer.h>

#include <QtCore/QDeadlineTimer>
#include <QtTest/QSignalSpy>

using namespace vx::system;

class TstInvokeManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void handsTheRequestToItsTargetOrAnswersFalse()
    {
        const QTemporaryDir root;
        qputenv("PPS_ROOT", root.path().toLocal8Bit());
        const auto invoke = [](const QString& target) {
            InvokeRequest request;
            request.setTarget(target);
            request.setAction(u"open"_s);
            request.setMimeType(u"text/plain"_s);
            request.setData("{\"a\":\"\xC3\xA4\"}\n");
            return InvokeManager().invoke(request);
        };
        const SlogCapture log(3);
        const QString longest(255, u'x');
        ObjectServer target;
        QVERIFY(target.listen(u"/pps/services/invocation/"_s + longest, nullptr));
        const QSignalSpy received(&target, &ObjectServer::recordReceived);
        QVERIFY(invoke(longest));
        QTRY_COMPARE(received.size(), 1);
        QCOMPARE(received.first().at(1).toByteArray(), "{\"target\":\"" + longest.toUtf8() +
                                                           "\",\"action\":\"open\",\"mimeType\":\"text/plain\"," +
                                                           "\"data\":\"{\\\"a\\\":\\\"\xC3\xA4\\\"}\\n\"}");
        // One that hangs has room for one to wait.
        const RawServer hung(root.filePath(u"services/invocation/app.hung"_s), 0);
        QVERIFY(invoke(u"app.hung"_s));
        const QDeadlineTimer patience(4000);
        for (const QString& name : {u""_s, u".."_s, u"."_s, u"../invocation/"_s + longest, longest + QChar(0),
                                    longest + u'x', u"app.hung"_s, u"app.absent"_s})
            QVERIFY2(!invoke(name), qPrintable(name));
        QVERIFY(!patience.hasExpired());
        const QStringList lines = log.lines();
        QCOMPARE(lines.filter(u"\": no name of a target"_s), lines.first(6));
        QVERIFY(lines.value(6).endsWith(u"/app.hung: Connection timed out"_s) && lines.size() == 8);
        QVERIFY(lines.last().startsWith(u"3: cannot invoke \"app.absent\" at "_s + root.path()));
    }
};

ZEL_TEST(TstInvokeManager)
#include "tst_invokemanager.moc"
