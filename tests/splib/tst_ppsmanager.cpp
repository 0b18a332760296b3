// SPDX-License-Identifier: Apache-2.0
#include <splib/channel/PPSManager.h>

#include <common/SlogCapture.h>

#include <vx/system/ObjectServer.h>
#include <zel/JsonWriter.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
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

    void throwsTheErrorOfAnObjectThatIsNotThere();
    void writesOneRecordAMessage();
    void dispatchesTheFirstMember_data();
    void dispatchesTheFirstMember();
    void dropsWhatItCannotDecode_data();
    void dropsWhatItCannotDecode();
    void dispatchesMessagesWithinMessages();
    void cutsTheJsonOutForTheLog_data();
    void cutsTheJsonOutForTheLog();
    void logsBothDirections();
    void closesTheObject();
};

void TstPPSManager::throwsTheErrorOfAnObjectThatIsNotThere()
{
    const SlogCapture log;
    int error = 0;
    try {
        open();
    } catch (int thrown) {
        error = thrown;
    }
    QCOMPARE(error, ENOENT);
    QCOMPARE(log.lines(), QStringList{QStringLiteral("3: can't open pps file at: /pps/services/zelcore/platform, "
                                                     "shutting down library")});
}

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

void TstPPSManager::dispatchesTheFirstMember_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"v\"}}\n");
    QTest::newRow("other attributes") << QStringLiteral("@platform\nmsg::zel\ndat:json:{\"m\":{\"a\":\"v\"}}\nx:n:1\n");
    QTest::newRow("other members") << QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"v\"},\"other\":{}}\n");
    QTest::newRow("other objects") << QStringLiteral("@x\ndat:json:{\"other\":{}}\n@platform\n"
                                                     "dat:json:{\"m\":{\"a\":\"v\"}}\n");
    QTest::newRow("no last line break") << QStringLiteral("@platform\ndat:json:{\"m\":{\"a\":\"v\"}}");
}

void TstPPSManager::dispatchesTheFirstMember()
{
    QFETCH(QString, text);
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
    manager->dispatchMessageReceived(text);
    QCOMPARE(heard, QStringList{QStringLiteral("v")});
    manager->removeListeners(&owner);
    manager->dispatchMessageReceived(text);
    QCOMPARE(heard.size(), 1);
}

void TstPPSManager::dropsWhatItCannotDecode_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text :
         {"", "\n", "nonsense", "@other\ndat:json:{\"m\":{}}\n", "@platform\ndata:json:{\"m\":{}}\n",
          "@platform\ndat::{\"m\":{}}\n", "@platform\ndat:json:{\"m\":{}\n", "@platform\ndat:json:{}\n",
          "@platform\ndat:json:[{\"m\":1}]\n", "@platform\ndat:json:{\"m\\u0000\":{}}\n"})
        QTest::newRow(text) << QString::fromUtf8(text);
}

void TstPPSManager::dropsWhatItCannotDecode()
{
    QFETCH(QString, text);
    vx::system::ObjectServer server;
    QVERIFY(server.listen(path, nullptr));
    const auto manager = open();
    QObject owner;
    int heard = 0;
    for (const char* type : {"m", "", "dat"})
        manager->addListener(&owner, QLatin1String(type), [&heard](QObject*, iface::JsonReaderAttribute) { ++heard; });
    manager->dispatchMessageReceived(text);
    QCOMPARE(heard, 0);
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

void TstPPSManager::cutsTheJsonOutForTheLog_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("json");
    const auto row = [](const char* text, const char* json) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(json);
    };
    row("@platform\ndat:json:{}\n", "{}");
    row("@platform\nmsg:json:1\ndat:json:{}\n", "1\ndat:json:{}");
    row("json:\n", "");
    row("json:x\nmore", "x");
    row("@platform\ndat:json:{}", nullptr);
    row("@platform\ndat:JSON:{}\n", nullptr);
    row("", nullptr);
}

void TstPPSManager::cutsTheJsonOutForTheLog()
{
    QFETCH(QString, text);
    QFETCH(QString, json);
    vx::system::ObjectServer server;
    QVERIFY(server.listen(path, nullptr));
    const auto manager = open();
    const SlogCapture log;
    QCOMPARE(manager->getJsonFromPps(text), json);
    QCOMPARE(log.lines(), json.isNull() ? QStringList{QStringLiteral("2: Error:PPSManager::getJsonFromPps(): invalid "
                                                                     "input: 1%")}
                                        : QStringList());
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
