// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <platform/channel/ServiceBridge.h>
#include <platform/ecoid/UtilsDelegate.h>

using namespace vx::platform::zel;

class TstServiceBridge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcesItselfFirst();
    void isOneForTheProcess();
    void ownsADelegateForEveryArea();
    void dispatchesOnlyUpToANulByte();
    void handlesWhatComesInWhileASlotSpinsAnEventLoop();
    void outlivesNonsense();

private:
    static QByteArray ecoIdAnswer(const QByteArray& ppId)
    {
        return "@platform\ndat:json:{\"requestEcoIdResponse\":{\"ppid\":\"" + ppId + "\",\"ecoId\":\"e\"}}\n";
    }

    Desk m_desk;
};

void TstServiceBridge::announcesItselfFirst()
{
    m_desk.core.leaveToTest(QStringLiteral("tpaApi"));
    m_desk.core.leaveToTest(QStringLiteral("requestListElements"));
    QVERIFY(ServiceBridge::instance());
    QCOMPARE(m_desk.core.nextRecord(), QByteArray("msg::zel\ndat:json:{\"tpaApi\":{\"apiType\":\"Qt\"}}\n"));

    const auto request = ScriptedCore::json(m_desk.core.nextMessage()).value(QLatin1String("requestListElements"));
    QCOMPARE(request[QLatin1String("type")].toString(), QStringLiteral("global"));
    QCOMPARE(request[QLatin1String("elements")].toArray(),
             QJsonArray({ScriptedCore::json(R"({"name":"permission"})")}));
}

void TstServiceBridge::isOneForTheProcess()
{
    auto* bridge = ServiceBridge::instance();
    QCOMPARE(ServiceBridge::instance(), bridge);
    QVERIFY(bridge->isInitialized());
    QVERIFY(!bridge->parent());
    QVERIFY(m_desk.nothingWritten()); // no second announcement
}

void TstServiceBridge::ownsADelegateForEveryArea()
{
    auto* bridge = ServiceBridge::instance();
    QVERIFY(bridge->registrar());
    QVERIFY(bridge->userProfile());
    QVERIFY(bridge->contactService());
    QVERIFY(bridge->messageService());
    QVERIFY(bridge->utils());
    QVERIFY(bridge->profileBox());

    QList<QByteArray> children; // in the order in which they were made
    const QObjectList objects = bridge->children();
    for (const QObject* object : objects)
        children.append(QByteArray(object->metaObject()->className()).replace("vx::platform::zel::", ""));
    const QList<QByteArray> expected{"ApplicationDelegate",
                                     "UserProfileDelegate",
                                     "ContactServiceDelegate",
                                     "MessageServiceDelegate",
                                     "UtilsDelegate",
                                     "ProfileBoxDelegate",
                                     "PPSMonitor"};
    QCOMPARE(children, expected);
}

void TstServiceBridge::dispatchesOnlyUpToANulByte()
{
    QSignalSpy answers(ServiceBridge::instance()->utils(), &UtilsDelegate::ecoIdUpdated);
    QByteArray cut = ecoIdAnswer("cut");
    cut.insert(cut.indexOf("\"ecoId\""), '\0');
    m_desk.core.sendRecord(cut);
    m_desk.core.sendRecord(ecoIdAnswer("whole") + QByteArray("\0garbage", 8));
    m_desk.core.sendRecord(ecoIdAnswer("after"));
    QTRY_COMPARE(answers.size(), 2);
    QCOMPARE(answers.at(0).at(0).toString(), QStringLiteral("whole"));
    QCOMPARE(answers.at(1).at(0).toString(), QStringLiteral("after"));
}

void TstServiceBridge::handlesWhatComesInWhileASlotSpinsAnEventLoop()
{
    QStringList order;
    QObject owner;
    connect(ServiceBridge::instance()->utils(), &UtilsDelegate::ecoIdUpdated, &owner, [&](const QString& ppId) {
        order += QStringLiteral("+") + ppId;
        if (ppId == QLatin1String("outer")) {
            m_desk.core.sendRecord(ecoIdAnswer("inner"));
            QTRY_COMPARE(order.size(), 3);
        }
        order += QStringLiteral("-") + ppId;
    });
    m_desk.core.sendRecord(ecoIdAnswer("outer"));
    QTRY_COMPARE(order.join(QLatin1Char(' ')), QStringLiteral("+outer +inner -inner -outer"));
}

void TstServiceBridge::outlivesNonsense()
{
    QSignalSpy answers(ServiceBridge::instance()->utils(), &UtilsDelegate::ecoIdUpdated);
    const QByteArray nonsense[] = {"@platform\n",
                                   "dat:json:{}",
                                   "@other\ndat:json:{\"tpaApi\":{}}\n",
                                   "@platform\ndat:json:{\"requestEcoIdResponse\":\n",
                                   "@platform\ndat:json:{\"requestEcoIdResponse\":[1,2]}\n",
                                   "@platform\ndat:json:{\"listChunk\":{\"type\":\"global\",\"elements\":7}}\n",
                                   QByteArray(65536, '{')};
    for (const QByteArray& record : nonsense)
        m_desk.core.sendRecord(record);
    m_desk.core.sendRecord(ecoIdAnswer("good"));
    QTRY_VERIFY(!answers.isEmpty() && answers.last().at(0).toString() == QLatin1String("good"));
}

QTEST_GUILESS_MAIN(TstServiceBridge)
#include "tst_servicebridge.moc"
