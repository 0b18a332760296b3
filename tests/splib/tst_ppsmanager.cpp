// SPDX-License-Identifier: Apache-2.0
#include <splib/channel/PPSManager.h>

#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <vx/system/ObjectServer.h>
#include <zel/JsonWriter.h>

#include <QtTest/QSignalSpy>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

using zelsplib::PPSManager;

class TstPPSManager : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_root;
    vx::system::ObjectServer m_server;
    std::unique_ptr<PPSManager> m_manager;

private Q_SLOTS:
    void init()
    {
        const QString path = u"/pps/services/zelcore/platform"_s;
        qputenv("PPS_ROOT", m_root.path().toUtf8());
        m_manager.reset();
        m_server.close();
        QVERIFY(m_server.listen(path, nullptr));
        m_manager = std::make_unique<PPSManager>(path, u"platform"_s, u"zel"_s);
    }

    void writesOneRecordAMessage()
    {
        QSignalSpy records(&m_server, &vx::system::ObjectServer::recordReceived);
        QVERIFY(m_manager->isConnected().getValue());
        const auto writer = QSharedPointer<zel::JsonWriter>::create(u"tpaApi"_s, u"zel"_s);
        writer->addAttribute(u"apiType"_s, u"\u00e4\n"_s);
        m_manager->send(writer);
        m_manager->send(QString());
        QTRY_COMPARE(records.size(), 2);
        QCOMPARE(records[0][1].toByteArray(),
                 QByteArray("msg::zel\ndat:json:{\"tpaApi\":{\"apiType\":\"\xc3\xa4\\n\"}}\n"));
        QCOMPARE(records[1][1].toByteArray(), QByteArray("msg::zel\ndat:json:\n"));
    }

    void dispatchesTheFirstMember_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const QByteArray& text, const QString& heard = {}) {
            QTest::newRow(name) << text << heard;
        };
        row("lines around it", "@platform\nmsg::zel\ndat:json:{\"m\":{\"a\":\"1\"}}\nx:n:1\n", u"1"_s);
        row("two members", "@platform\ndat:json:{\"m\":{\"a\":\"2\"},\"other\":{}}\n", u"2"_s);
        row("two objects", "@x\ndat:json:{\"other\":{}}\n@platform\ndat:json:{\"m\":{\"a\":\"3\"}}", u"3"_s);
        row("broken lines around it, and broken members",
            "@x\nno form\n@platform\nbad:json:{\ndat:json:{\"m\":{\"n\":1e309,\"b\":[99999999999999999999],"
            "\"a\":\"4\"}}\nworse:n:x\n",
            u"4"_s);
        row("bytes that are no UTF-8", "@platform\ndat:json:{\"m\":{\"a\":\"\xFF<\xC3\xA9\"}}\n", u"\uFFFD<\u00E9"_s);
        row("a byte order mark", "\xEF\xBB\xBF@platform\ndat:json:{\"m\":{\"a\":\"5\"}}\n", u"5"_s);
        for (const char* text :
             {"", "\n", "nonsense", "@other\ndat:json:{\"m\":{}}\n", "@platform\ndata:json:{\"m\":{}}\n",
              "@platform\ndat::{\"m\":{}}\n", "@platform\ndat:json:{\"m\":{}\n", "@platform\ndat:json:{}\n",
              "@platform\ndat:json:[{\"m\":1}]\n", "@platform\ndat:json:{\"m\\u0000\":{}}\n"})
            row(qPrintable(u"no message: "_s + QString::fromUtf8(text).simplified()), text);
    }
    void dispatchesTheFirstMember()
    {
        QFETCH(const QByteArray, text);
        QObject owner;
        QStringList heard;
        for (const QString& type : {u"m"_s, u"other"_s, u"dat"_s, QString()}) {
            m_manager->addListener(&owner, type, [&heard](QObject*, iface::JsonReaderAttribute message) {
                QString value = u"nothing"_s;
                message.object().readString("a", value);
                heard.append(value);
            });
        }
        m_manager->dispatchMessageReceived(text);
        QTEST(heard.join(u' '), "expected");
        m_manager->removeListeners(&owner);
        m_manager->dispatchMessageReceived(u"@platform\ndat:json:{\"m\":{\"a\":\"gone\"}}\n"_s);
        QVERIFY(!heard.contains(u"gone"));
    }

    void logsBothDirections()
    {
        {
            const SlogCapture log;
            m_manager->send(u"{\"%1\":1}"_s);
            m_manager->dispatchMessageReceived(u"@platform\ndat:json:{\"%1\":1}\n"_s);
            m_manager->dispatchMessageReceived(u"nonsense"_s);
            QCOMPARE(log.lines(), (QStringList{u"6: sending json string to zelcore ==>: {\"%1\":1}"_s,
                                               u"6: received json string from zelcore <==: {\"%1\":1}"_s,
                                               u"2: Error:PPSManager::getJsonFromPps(): invalid input: 1%"_s,
                                               u"6: received json string from zelcore <==: "_s}));
        }
        const SlogCapture log(5);
        m_manager->dispatchMessageReceived(u"nonsense"_s);
        QCOMPARE(log.lines(), QStringList{u"2: Error:PPSManager::getJsonFromPps(): invalid input: 1%"_s});
    }

    void closesTheObject()
    {
        QSignalSpy gone(&m_server, &vx::system::ObjectServer::clientDisconnected);
        QVERIFY(m_manager->getPpsHandle() > 0);
        QTRY_COMPARE(m_server.clients().size(), 1);
        m_manager.reset();
        QTRY_COMPARE(gone.size(), 1);
    }
};

ZEL_TEST(TstPPSManager)
#include "tst_ppsmanager.moc"
