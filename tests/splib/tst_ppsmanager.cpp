// SPDX-License-Identifier: Apache-2.0
#include <splib/channel/PPSManager.h>

#include <common/SlogCapture.h>

#include <vx/system/ObjectServer.h>
#include <zel/JsonWriter.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <unistd.h>

using zelsplib::PPSManager;

namespace {

const QString path = QStringLiteral("/pps/services/zelcore/platform");

std::unique_ptr<PPSManager> open()
{
    return std::make_unique<PPSManager>(path, QStringLiteral("platform"), QStringLiteral("zel"));
}

} // namespace

class TstPPSManager : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_root;

private Q_SLOTS:
    void initTestCase() { qputenv("PPS_ROOT", m_root.path().toUtf8()); }

    void writesOneRecordAMessage();
    void dispatchesTheFirstMember();
    void dropsWhatItCannotDecode();
    void dispatchesMessagesWithinMessages();
    void logsBothDirections();
    void closesTheObject();
};

void TstPPSManager::writesOneRecordAMessage()
{
    vx::system::ObjectServer server;
    QVERIFY(server.listen(path, nullptr));
    QSignalSpy records(&server, &vx::system::ObjectServer::recordReceived);
    const auto manager = open();
    QVERIFY(manager->isConnected().getValue());
    const auto writer = QSharedPointer<zel::JsonWriter>::create(QStringLiteral("tpaApi"), QStringLiteral("zel"));
    writer->addAttribute(QStringLiteral("apiType"), QStringLiteral("\u00e4\n"));
    manager->send(writer);
    manager->send(QString());
    QTRY_COMPARE(records.size(), 2);
    QCOMPARE(records[0][1].toByteArray(),
             QByteArray("msg::zel\ndat:json:{\"tpaApi\":{\"apiType\":\"\xc3\xa4\\n\"}}\n"));
    QCOMPARE(records[1][1].toByteArray(), QByteArray("msg::zel\ndat:json:\n"));
}

void TstPPSManager::dispatchesTheFirstMember()
{
    vx::system::ObjectServer server;
    QVERIFY(server.listen(path, nullptr));
    const auto manager = open();
    QObject owner;
    QStringList heard;
    const auto hear = [&heard](QObject*, iface::JsonReaderAttribute message) {
        QString value;
        message.object().readString("a", value);
        heard.append(value);
    };
    manager->addListener(&owner, QStringLiteral("m"), hear);
    manager->addListener(&owner, QStringLiteral("other"), hear);
    const QStringList texts{QStringLiteral("@platform\nmsg::zel\ndat:json:{\"m\":{\"a\":\"1\"}}\nx:n:1\n"),
                            QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"2\"},\"other\":{}}\n"),
                            QStringLiteral("@x\ndat:json:{\"other\":{}}\n@platform\ndat:json:{\"m\":{\"a\":\"3\"}}")};
    for (const QString& text : texts)
        manager->dispatchMessageReceived(text);
    QCOMPARE(heard.join(u' '), QStringLiteral("1 2 3"));
    manager->removeListeners(&owner);
    manager->dispatchMessageReceived(texts.first());
    QCOMPARE(heard.size(), 3);
}

void TstPPSManager::dropsWhatItCannotDecode()
{
    vx::system::ObjectServer server;
    QVERIFY(server.listen(path, nullptr));
    const auto manager = open();
    QObject owner;
    int heard = 0;
    for (const char* type : {"m", "", "dat"})
        manager->addListener(&owner, QLatin1String(type), [&heard](QObject*, iface::JsonReaderAttribute) { ++heard; });
    for (const char* text :
         {"", "\n", "nonsense", "@other\ndat:json:{\"m\":{}}\n", "@platform\ndata:json:{\"m\":{}}\n",
          "@platform\ndat::{\"m\":{}}\n", "@platform\ndat:json:{\"m\":{}\n", "@platform\ndat:json:{}\n",
          "@platform\ndat:json:[{\"m\":1}]\n", "@platform\ndat:json:{\"m\\u0000\":{}}\n"}) {
        manager->dispatchMessageReceived(QString::fromUtf8(text));
        QVERIFY2(heard == 0, text);
    }
    manager->dispatchMessageReceived(QStringLiteral("@platform\ndat:json:{\"m\":{}}\n"));
    QCOMPARE(heard, 1);
}

void TstPPSManager::dispatchesMessagesWithinMessages()
{
    vx::system::ObjectServer server;
    QVERIFY(server.listen(path, nullptr));
    const auto manager = open();
    QObject owner;
    QStringList heard;
    manager->addListener(&owner, QStringLiteral("m"), [&](QObject*, iface::JsonReaderAttribute message) {
        const iface::JsonObjectReader body = message.object();
        bool nest = false;
        if (body.readBool("nest", nest))
            manager->dispatchMessageReceived(QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"inner\"}}\n"));
        QString value;
        body.readString("a", value);
        heard.append(value);
    });
    manager->dispatchMessageReceived(QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"outer\",\"nest\":true}}\n"));
    QCOMPARE(heard, (QStringList{QStringLiteral("inner"), QStringLiteral("outer")}));
}

void TstPPSManager::logsBothDirections()
{
    vx::system::ObjectServer server;
    QVERIFY(server.listen(path, nullptr));
    const auto manager = open();
    {
        const SlogCapture log;
        manager->send(QStringLiteral("{\"%1\":1}"));
        manager->dispatchMessageReceived(QStringLiteral("@platform\ndat:json:{\"%1\":1}\n"));
        manager->dispatchMessageReceived(QStringLiteral("nonsense"));
        QCOMPARE(log.lines(), (QStringList{QStringLiteral("6: sending json string to zelcore ==>: {\"%1\":1}"),
                                           QStringLiteral("6: received json string from zelcore <==: {\"%1\":1}"),
                                           QStringLiteral("2: Error:PPSManager::getJsonFromPps(): invalid input: 1%"),
                                           QStringLiteral("6: received json string from zelcore <==: ")}));
    }
    const SlogCapture log(5);
    manager->dispatchMessageReceived(QStringLiteral("nonsense"));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("2: Error:PPSManager::getJsonFromPps(): invalid input: 1%")});
}

void TstPPSManager::closesTheObject()
{
    vx::system::ObjectServer server;
    QVERIFY(server.listen(path, nullptr));
    QSignalSpy gone(&server, &vx::system::ObjectServer::clientDisconnected);
    auto manager = open();
    QVERIFY(manager->getPpsHandle() > 0);
    QTRY_COMPARE(server.clients().size(), 1);
    manager.reset();
    QTRY_COMPARE(gone.size(), 1);
}

QTEST_GUILESS_MAIN(TstPPSManager)
#include "tst_ppsmanager.moc"
