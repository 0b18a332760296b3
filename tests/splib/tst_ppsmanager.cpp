// SPDX-License-Identifier: Apache-2.0
#include <splib/channel/PPSManager.h>

#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <vx/system/ObjectServer.h>
#include <zel/JsonWriter.h>

#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>
#include <unistd.h>

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
        const QString path = QStringLiteral("/pps/services/zelcore/platform");
        qputenv("PPS_ROOT", m_root.path().toUtf8());
        m_manager.reset();
        m_server.close();
        QVERIFY(m_server.listen(path, nullptr));
        m_manager = std::make_unique<PPSManager>(path, QStringLiteral("platform"), QStringLiteral("zel"));
    }

    void writesOneRecordAMessage()
    {
        QSignalSpy records(&m_server, &vx::system::ObjectServer::recordReceived);
        QVERIFY(m_manager->isConnected().getValue());
        const auto writer = QSharedPointer<zel::JsonWriter>::create(QStringLiteral("tpaApi"), QStringLiteral("zel"));
        writer->addAttribute(QStringLiteral("apiType"), QStringLiteral("\u00e4\n"));
        m_manager->send(writer);
        m_manager->send(QString());
        QTRY_COMPARE(records.size(), 2);
        QCOMPARE(records[0][1].toByteArray(),
                 QByteArray("msg::zel\ndat:json:{\"tpaApi\":{\"apiType\":\"\xc3\xa4\\n\"}}\n"));
        QCOMPARE(records[1][1].toByteArray(), QByteArray("msg::zel\ndat:json:\n"));
    }

    void dispatchesTheFirstMember()
    {
        QObject owner;
        QStringList heard;
        const auto hear = [&heard](QObject*, iface::JsonReaderAttribute message) {
            QString value;
            message.object().readString("a", value);
            heard.append(value);
        };
        m_manager->addListener(&owner, QStringLiteral("m"), hear);
        m_manager->addListener(&owner, QStringLiteral("other"), hear);
        const QStringList texts{
            QStringLiteral("@platform\nmsg::zel\ndat:json:{\"m\":{\"a\":\"1\"}}\nx:n:1\n"),
            QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"2\"},\"other\":{}}\n"),
            QStringLiteral("@x\ndat:json:{\"other\":{}}\n@platform\ndat:json:{\"m\":{\"a\":\"3\"}}"),
            // What is broken beside it costs nothing.
            QStringLiteral(
                "@x\nno form\n@platform\nbad:json:{\ndat:json:{\"m\":{\"n\":1e309,\"b\":[99999999999999999999],"
                "\"a\":\"4\"}}\nworse:n:x\n")};
        for (const QString& text : texts)
            m_manager->dispatchMessageReceived(text);
        QCOMPARE(heard.join(u' '), QStringLiteral("1 2 3 4"));
        m_manager->removeListeners(&owner);
        m_manager->dispatchMessageReceived(texts.first());
        QCOMPARE(heard.size(), 4);
    }

    void dropsWhatItCannotDecode()
    {
        QObject owner;
        int heard = 0;
        for (const char* type : {"m", "", "dat"})
            m_manager->addListener(&owner, QLatin1String(type),
                                   [&heard](QObject*, iface::JsonReaderAttribute) { ++heard; });
        for (const char* text :
             {"", "\n", "nonsense", "@other\ndat:json:{\"m\":{}}\n", "@platform\ndata:json:{\"m\":{}}\n",
              "@platform\ndat::{\"m\":{}}\n", "@platform\ndat:json:{\"m\":{}\n", "@platform\ndat:json:{}\n",
              "@platform\ndat:json:[{\"m\":1}]\n", "@platform\ndat:json:{\"m\\u0000\":{}}\n"}) {
            m_manager->dispatchMessageReceived(QString::fromUtf8(text));
            QVERIFY2(heard == 0, text);
        }
        m_manager->dispatchMessageReceived(QStringLiteral("@platform\ndat:json:{\"m\":{}}\n"));
        QCOMPARE(heard, 1);
    }

    void readsBytesThatAreNoUtf8AsReplacements()
    {
        QObject owner;
        QStringList heard;
        m_manager->addListener(&owner, QStringLiteral("m"), [&heard](QObject*, iface::JsonReaderAttribute message) {
            QString value;
            message.object().readString("a", value);
            heard.append(value);
        });
        m_manager->dispatchMessageReceived(QByteArray("@platform\ndat:json:{\"m\":{\"a\":\"\xFF<\xC3\xA9\"}}\n"));
        m_manager->dispatchMessageReceived(QByteArray("\xEF\xBB\xBF@platform\ndat:json:{\"m\":{\"a\":\"b\"}}\n"));
        QCOMPARE(heard, (QStringList{QStringLiteral(u"\uFFFD<\u00E9"), QStringLiteral("b")}));
    }

    void dispatchesMessagesWithinMessages()
    {
        QObject owner;
        QStringList heard;
        m_manager->addListener(&owner, QStringLiteral("m"), [&](QObject*, iface::JsonReaderAttribute message) {
            const iface::JsonObjectReader body = message.object();
            bool nest = false;
            if (body.readBool("nest", nest))
                m_manager->dispatchMessageReceived(QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"inner\"}}\n"));
            QString value;
            body.readString("a", value);
            heard.append(value);
        });
        m_manager->dispatchMessageReceived(
            QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"outer\",\"nest\":true}}\n"));
        QCOMPARE(heard, (QStringList{QStringLiteral("inner"), QStringLiteral("outer")}));
    }

    void logsBothDirections()
    {
        {
            const SlogCapture log;
            m_manager->send(QStringLiteral("{\"%1\":1}"));
            m_manager->dispatchMessageReceived(QStringLiteral("@platform\ndat:json:{\"%1\":1}\n"));
            m_manager->dispatchMessageReceived(QStringLiteral("nonsense"));
            QCOMPARE(log.lines(),
                     (QStringList{QStringLiteral("6: sending json string to zelcore ==>: {\"%1\":1}"),
                                  QStringLiteral("6: received json string from zelcore <==: {\"%1\":1}"),
                                  QStringLiteral("2: Error:PPSManager::getJsonFromPps(): invalid input: 1%"),
                                  QStringLiteral("6: received json string from zelcore <==: ")}));
        }
        const SlogCapture log(5);
        m_manager->dispatchMessageReceived(QStringLiteral("nonsense"));
        QCOMPARE(log.lines(), QStringList{QStringLiteral("2: Error:PPSManager::getJsonFromPps(): invalid input: 1%")});
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
