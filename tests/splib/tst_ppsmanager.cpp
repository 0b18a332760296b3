// SPDX-License-Identifier: Apache-2.0
#include <splib/channel/PPSManager.h>

#include <common/FailingAllocations.h>
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <vx/system/ObjectServer.h>

#include <QtTest/QSignalSpy>
#include <QtCore/QTemporaryDir>

using namespace Qt::StringLiterals;

class TstPPSManager : public QObject
{
    Q_OBJECT

    const QString path = u"/pps/services/zelcore/platform"_s;
    const QTemporaryDir root;
    vx::system::ObjectServer server;
    const bool isServed = qputenv("PPS_ROOT", root.path().toUtf8()) && server.listen(path, nullptr);
    zelsplib::PPSManager manager{path, u"platform"_s, u"zel"_s};

private Q_SLOTS:
    void carriesARecordWholeOrNotAtAllWithoutMemory()
    {
        const QSignalSpy records(&server, &vx::system::ObjectServer::recordReceived);
        const QString text = u"{\"m\":{\"a\":\"%1\"}}"_s.arg(QString(300, u'x'));
        const QByteArray record = "@platform\ndat:json:" + text.toUtf8() + '\n';
        int heard = 0;
        manager.addListener(this, u"m"_s, [&](QObject*, iface::JsonReaderAttribute message) {
            QString value;
            heard += message.object().readString("a", value) && value.size() == 300 ? 1 : 1000;
        });
        const auto carry = [&](int& dispatched) {
            manager.send(text);
            manager.dispatchMessageReceived(record);
            ++dispatched;
        };
        int whole = 0;
        const auto check = [&](int dispatched) { whole += dispatched; };
        QVERIFY(failing::eachInTurn([] { return std::make_unique<int>(0); }, carry, check) > 0);
        manager.removeListeners(this);
        QCOMPARE(heard, whole);
        manager.send(u"end"_s);
        QTRY_VERIFY(!records.isEmpty() && records.last()[1].toByteArray().endsWith("json:end\n"));
        for (const QList<QVariant>& each : records.first(records.size() - 1))
            QCOMPARE(each[1].toByteArray(), "msg::zel\ndat:json:" + text.toUtf8() + '\n');
    }

    void writesOneRecordAMessageAndLogsBothDirections()
    {
        QSignalSpy records(&server, &vx::system::ObjectServer::recordReceived);
        const SlogCapture log;
        manager.send(u"{\"%1\":1}"_s);
        manager.send(QString());
        manager.dispatchMessageReceived(u"@platform\ndat:json:{\"%1\":1}\n"_s);
        manager.dispatchMessageReceived(u"nonsense"_s);
        QCOMPARE(log.lines(), (QStringList{u"6: sending json string to zelcore ==>: {\"%1\":1}"_s,
                                           u"6: sending json string to zelcore ==>: "_s,
                                           u"6: received json string from zelcore <==: {\"%1\":1}"_s,
                                           u"2: Error:PPSManager::getJsonFromPps(): invalid input: 1%"_s,
                                           u"6: received json string from zelcore <==: "_s}));
        QTRY_COMPARE(records.size(), 2);
        QCOMPARE(records[0][1].toByteArray(), QByteArray("msg::zel\ndat:json:{\"%1\":1}\n"));
        QCOMPARE(records[1][1].toByteArray(), QByteArray("msg::zel\ndat:json:\n"));
        const QSignalSpy tooLong(&manager, &zelsplib::PPSManager::messageTooLong);
        for (const int more : {0, 1}) { // than one read and a last line break
            manager.send(QString(65518 + more, u'x'));
            QCOMPARE(tooLong.size(), more);
        }
    }

    void dispatchesTheFirstMemberOfItsObject()
    {
        const std::pair<QByteArray, QString> rows[] = {
            {"@platform\nmsg::zel\ndat:json:{\"m\":{\"a\":\"1\"},\"other\":{}}\nx:n:1\n", u"1"_s},
            {"@x\ndat:json:{\"other\":{}}\n@platform\ndat:json:{\"m\":{\"a\":\"2\"}}", u"2"_s},
            {"@x\nno form\n@platform\nbad:json:{\ndat:json:{\"m\":{\"n\":1e309,\"b\":[99999999999999999999],"
             "\"a\":\"3\"}}\nworse:n:x\n",
             u"3"_s},
            {"@platform\ndat:json:{\"m\":{\"a\":\"\xFF<\xC3\xA9\"}}\n", u"\uFFFD<\u00E9"_s}, // no UTF-8
            {"\xEF\xBB\xBF@platform\ndat:json:{\"m\":{\"a\":\"5\"}}\n", u"5"_s},             // a byte order mark
            {"@platform\ndat:json:{\"m\":{\"a\":\"6\"}}\nx::\xFF\n", u"6"_s},                // no UTF-8 elsewhere
            {"@platform\r\ndat:json:{\"m\":{\"a\":\"7\"}}\r\n", u"7"_s},
            {"", {}},
            {"@other\ndat:json:{\"m\":{}}\n", {}},
            {"@platform\ndata:json:{\"m\":{}}\n", {}},
            {"@platform\ndat::{\"m\":{}}\n", {}},
            {"@platform\ndat:json:{\"m\":{}\n", {}},
            {"@platform\ndat:json:{}\n", {}},
            {"@platform\ndat:json:[{\"m\":1}]\n", {}},
            {"@platform\ndat:json:{\"m\\u0000\":{}}\n", {}}};
        QStringList heard;
        for (const QString& type : {u"m"_s, u"other"_s, u"dat"_s, QString()}) {
            manager.addListener(this, type, [&heard](QObject*, iface::JsonReaderAttribute message) {
                QString value = u"nothing"_s;
                message.object().readString("a", value);
                heard.append(value);
            });
        }
        for (const auto& [text, expected] : rows) {
            manager.dispatchMessageReceived(text);
            QVERIFY2(heard.join(u' ') == expected, text.constData());
            heard.clear();
        }
        manager.removeListeners(this);
        manager.dispatchMessageReceived(rows[0].first);
        QCOMPARE(heard, QStringList());
    }
};

ZEL_TEST(TstPPSManager)
#include "tst_ppsmanager.moc"
