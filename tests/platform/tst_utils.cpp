// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/Utils.h>

#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>

using namespace vx::platform::zel;

class TstUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesEverythingWithoutAccess();
    void asksForAnEcoId();
    void asksForTheStatusOfAnEcoId();
    void passesOnAnswersAsTheyCome();
    void readsEveryStatus_data();
    void readsEveryStatus();
    void handsAnInvitationOver();
    void handsAChatOver();
    void answersFalseWhenNobodyTakesIt();
    void mayBeDestroyedInItsOwnSlot();
    void refusesEverythingAfterItsContextIsGone();

private:
    static void verifyRefusesEverything(Utils& utils);
    static QJsonObject invocationAt(vx::system::ObjectServer& target, const std::function<bool()>& invoke);

    Desk m_desk;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<Utils> m_utils;
};

void TstUtils::verifyRefusesEverything(Utils& utils)
{
    QVERIFY(!utils.requestEcoId(QStringLiteral("p")));
    QVERIFY(!utils.requestEcoIdStatus(QStringLiteral("e")));
    QVERIFY(!utils.sendContactInvitation(QStringLiteral("e"), QStringLiteral("n"), QStringLiteral("m")));
    QVERIFY(!utils.invokeChat(QStringLiteral("e")));
}

void TstUtils::refusesEverythingWithoutAccess()
{
    Utils withoutContext(nullptr);
    verifyRefusesEverything(withoutContext);

    m_context = std::make_unique<Context>(QUuid::createUuid());
    m_utils = std::make_unique<Utils>(m_context.get());
    verifyRefusesEverything(*m_utils);
    QVERIFY(m_desk.nothingWritten());
    QVERIFY(m_desk.becomeAllowed()); // and from here on the same object works
}

void TstUtils::asksForAnEcoId()
{
    QVERIFY(m_utils->requestEcoId(QStringLiteral("p \"1\"")));
    QCOMPARE(m_desk.core.nextMessage(), QByteArray(R"({"requestEcoId":{"ppid":"p \"1\""}})"));
}

void TstUtils::asksForTheStatusOfAnEcoId()
{
    QVERIFY(m_utils->requestEcoIdStatus(QStringLiteral("e")));
    QCOMPARE(m_desk.core.nextMessage(), QByteArray(R"({"requestEcoIdStatus":{"ecoId":"e"}})"));
    QVERIFY(!m_utils->requestEcoIdStatus(QString()));
    QVERIFY(m_desk.nothingWritten());
}

void TstUtils::passesOnAnswersAsTheyCome()
{
    Utils second(m_context.get());
    QSignalSpy answers(m_utils.get(), &Utils::ecoIdUpdated);
    QSignalSpy same(&second, &Utils::ecoIdUpdated);
    for (const char* body :
         {R"({"ppid":"b","ecoId":"2"})", R"({"ppid":"never asked","ecoId":""})", R"({"ppid":"b","ecoId":"2"})", "{}"})
        m_desk.core.send(QStringLiteral("requestEcoIdResponse"), ScriptedCore::json(body));
    QTRY_COMPARE(answers.size(), 4);
    const QList<QVariantList> expected{{QStringLiteral("b"), QStringLiteral("2")},
                                       {QStringLiteral("never asked"), QString()},
                                       {QStringLiteral("b"), QStringLiteral("2")},
                                       {QString(), QString()}};
    QCOMPARE(static_cast<const QList<QVariantList>&>(answers), expected);
    QCOMPARE(static_cast<const QList<QVariantList>&>(same), expected);
}

void TstUtils::readsEveryStatus_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<EcoIdStatus::Type>("status");
    QTest::newRow("Unknown") << QStringLiteral("Unknown") << EcoIdStatus::Unknown;
    QTest::newRow("ContactExists") << QStringLiteral("ContactExists") << EcoIdStatus::ContactExists;
    QTest::newRow("Pending") << QStringLiteral("PendingContactExists") << EcoIdStatus::PendingContactInviteExists;
    QTest::newRow("another") << QStringLiteral("Another") << EcoIdStatus::Unknown;
}

void TstUtils::readsEveryStatus()
{
    QFETCH(QString, word);
    QSignalSpy answers(m_utils.get(), &Utils::ecoIdStatusUpdated);
    m_desk.core.send(QStringLiteral("requestEcoIdStatusResponse"),
                     {{QStringLiteral("ecoId"), QStringLiteral("e")}, {QStringLiteral("status"), word}});
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.at(0).at(0).toString(), QStringLiteral("e"));
    QTEST(answers.at(0).at(1).value<EcoIdStatus::Type>(), "status");
}

QJsonObject TstUtils::invocationAt(vx::system::ObjectServer& target, const std::function<bool()>& invoke)
{
    QSignalSpy records(&target, &vx::system::ObjectServer::recordReceived);
    if (!invoke() || !QTest::qWaitFor([&] { return !records.isEmpty(); }))
        return {};
    return ScriptedCore::json(records.at(0).at(1).toByteArray());
}

void TstUtils::handsAnInvitationOver()
{
    vx::system::ObjectServer target;
    QVERIFY(target.listen(QStringLiteral("/pps/services/invocation/sys.socialplatform"), nullptr));
    const QJsonObject request = invocationAt(target, [this] {
        return m_utils->sendContactInvitation(QStringLiteral("e"), QStringLiteral("Ada"), QStringLiteral("\"Hi\"\n"));
    });
    QCOMPARE(request.value(QLatin1String("target")).toString(), QStringLiteral("sys.socialplatform"));
    QCOMPARE(request.value(QLatin1String("action")).toString(), QStringLiteral("vx.action.INVITEZEL"));
    QCOMPARE(request.value(QLatin1String("mimeType")).toString(),
             QStringLiteral("application/vnd.socialplatform.data"));
    QCOMPARE(request.value(QLatin1String("data")).toString(),
             QStringLiteral("{\"contactInvitation\":{\"ecoid\":\"e\",\"display_name\":\"Ada\","
                            "\"invite_msg\":\"\\\"Hi\\\"\\n\"}}"));
}

void TstUtils::handsAChatOver()
{
    vx::system::ObjectServer target;
    QVERIFY(target.listen(QStringLiteral("/pps/services/invocation/sys.zel.chathandler"), nullptr));
    const QJsonObject request = invocationAt(target, [this] { return m_utils->invokeChat(QStringLiteral("e")); });
    QCOMPARE(request.value(QLatin1String("target")).toString(), QStringLiteral("sys.zel.chathandler"));
    QCOMPARE(request.value(QLatin1String("action")).toString(), QStringLiteral("vx.action.ZELCHAT"));
    QCOMPARE(request.value(QLatin1String("mimeType")).toString(),
             QStringLiteral("application/vnd.socialplatform.data"));
    QCOMPARE(request.value(QLatin1String("data")).toString(), QStringLiteral("{\"contactChat\":{\"ecoid\":\"e\"}}"));
}

void TstUtils::answersFalseWhenNobodyTakesIt()
{
    QVERIFY(!m_utils->sendContactInvitation(QStringLiteral("e"), QStringLiteral("n"), QStringLiteral("m")));
    QVERIFY(!m_utils->invokeChat(QStringLiteral("e")));
}

void TstUtils::mayBeDestroyedInItsOwnSlot()
{
    QPointer<Utils> doomed = new Utils(m_context.get());
    connect(doomed, &Utils::ecoIdUpdated, doomed, [&] { delete doomed; });
    QVERIFY(m_desk.settle());
    QVERIFY(!doomed);
}

void TstUtils::refusesEverythingAfterItsContextIsGone()
{
    auto context = std::make_unique<Context>(QUuid::createUuid());
    Utils utils(context.get());
    QVERIFY(utils.requestEcoId(QStringLiteral("p")));
    context.reset();
    verifyRefusesEverything(utils);
}

QTEST_GUILESS_MAIN(TstUtils)
#include "tst_utils.moc"
