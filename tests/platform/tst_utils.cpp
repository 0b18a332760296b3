// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/Utils.h>

using namespace vx::platform::zel;

class TstUtils : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_context = std::make_unique<Context>(QUuid::createUuid());
        m_utils = std::make_unique<Utils>(m_context.get());
        QVERIFY(m_desk.becomeAllowed());
    }

    void asksForEcoIdsAndTheirStatus()
    {
        QVERIFY(m_utils->requestEcoId(QStringLiteral("p \"1\"")));
        QCOMPARE(m_desk.core.nextMessage(), QByteArray("{\"requestEcoId\":{\"ppid\":\"p \\\"1\\\"\"}}"));
        QVERIFY(m_utils->requestEcoIdStatus(QStringLiteral("e")));
        QCOMPARE(m_desk.core.nextMessage(), QByteArray(R"({"requestEcoIdStatus":{"ecoId":"e"}})"));
        QVERIFY(!m_utils->requestEcoIdStatus(QString()));
        QVERIFY(m_desk.nothingWritten());
    }

    void passesOnAnswersAsTheyCome()
    {
        Utils second(m_context.get());
        QSignalSpy answers(m_utils.get(), &Utils::ecoIdUpdated);
        QSignalSpy same(&second, &Utils::ecoIdUpdated);
        for (const char* body : {R"({"ppid":"b","ecoId":"2"})", R"({"ppid":"never asked","ecoId":""})",
                                 R"({"ppid":"b","ecoId":"2"})", "{}"})
            m_desk.core.send(QStringLiteral("requestEcoIdResponse"), ScriptedCore::json(body));
        QTRY_COMPARE(answers.size(), 4);
        const QList<QVariantList> expected{{QStringLiteral("b"), QStringLiteral("2")},
                                           {QStringLiteral("never asked"), QString()},
                                           {QStringLiteral("b"), QStringLiteral("2")},
                                           {QString(), QString()}};
        QCOMPARE(static_cast<const QList<QVariantList>&>(answers), expected);
        QCOMPARE(static_cast<const QList<QVariantList>&>(same), expected);
    }

    void readsEveryStatus()
    {
        const std::pair<const char*, EcoIdStatus::Type> words[] = {
            {"Unknown", EcoIdStatus::Unknown},
            {"ContactExists", EcoIdStatus::ContactExists},
            {"PendingContactExists", EcoIdStatus::PendingContactInviteExists},
            {"PendingContactInviteExists", EcoIdStatus::Unknown}}; // the enumerator is no word
        for (const auto& [word, status] : words) {
            QSignalSpy answers(m_utils.get(), &Utils::ecoIdStatusUpdated);
            m_desk.core.send(QStringLiteral("requestEcoIdStatusResponse"),
                             {{QStringLiteral("ecoId"), QStringLiteral("e")},
                              {QStringLiteral("status"), QString::fromLatin1(word)}});
            QTRY_COMPARE(answers.size(), 1);
            QCOMPARE(answers.at(0).at(0).toString(), QStringLiteral("e"));
            QCOMPARE(answers.at(0).at(1).value<EcoIdStatus::Type>(), status);
        }
    }

private:
    Desk m_desk;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<Utils> m_utils;
};

QTEST_GUILESS_MAIN(TstUtils)
#include "tst_utils.moc"
