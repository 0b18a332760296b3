// SPDX-License-Identifier: Apache-2.0
#include <splib/ecoid/EcoIdManager.h>
#include <splib/ecoid/EcoIdStatusManager.h>

#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>

#include <QTest>

struct TakesOneText
{
    void pushEcoIdResponse(const QString&) {}
    void pushEcoIdStatusResponse(const QString&) {}
};
static_assert(zelsplib::EcoIdEvents<RecordingEcoId> && !zelsplib::EcoIdEvents<TakesOneText>);
static_assert(!zelsplib::EcoIdEvents<RecordingEcoIdStatus>);
static_assert(zelsplib::EcoIdStatusEvents<RecordingEcoIdStatus> && !zelsplib::EcoIdStatusEvents<TakesOneText>);

class TstEcoIdManagers : public QObject
{
    Q_OBJECT

private:
    QSharedPointer<FakePipe> m_pipe = QSharedPointer<FakePipe>::create();
    zelsplib::EcoIdManager<RecordingEcoId> m_ecoId{m_pipe};
    zelsplib::EcoIdStatusManager<RecordingEcoIdStatus> m_status{m_pipe};
    EventLog m_log;

private Q_SLOTS:
    void initTestCase();
    void asks();
    void tellsEveryAnswerAsItComes();
};

void TstEcoIdManagers::initTestCase()
{
    m_ecoId.eventHandler().log = &m_log;
    m_status.eventHandler().log = &m_log;
}

void TstEcoIdManagers::asks()
{
    m_ecoId.requestEcoId(QStringLiteral("p1"));
    m_status.requestEcoIdStatus(QStringLiteral("e1"));
    QVERIFY(m_pipe->expectSentText(R"({"requestEcoId":{"ppid":"p1"}})"));
    QVERIFY(m_pipe->expectSentText(R"({"requestEcoIdStatus":{"ecoId":"e1"}})"));
}

void TstEcoIdManagers::tellsEveryAnswerAsItComes()
{
    m_pipe->inject(R"({"requestEcoIdResponse":{"ppid":"p2","ecoId":"e2"}})");
    m_pipe->inject(R"({"requestEcoIdStatusResponse":{"status":"ContactExists","ecoId":"e1"}})");
    m_pipe->inject(R"({"requestEcoIdResponse":{"ppid":"p1"}})");
    m_pipe->inject(R"({"requestEcoIdResponse":{"ppid":"p1"}})");
    m_pipe->inject(R"({"requestEcoIdStatusResponse":{"ecoId":"e3","status":4}})");
    m_pipe->inject(R"({"requestEcoIdStatusResponse":null})");
    QCOMPARE(m_log.take(), (QStringList{QStringLiteral("ecoId p2 e2"), QStringLiteral("ecoIdStatus e1 ContactExists"),
                                        QStringLiteral("ecoId p1 "), QStringLiteral("ecoId p1 "),
                                        QStringLiteral("ecoIdStatus e3 "), QStringLiteral("ecoIdStatus  ")}));
    QVERIFY(m_pipe->expectNothingSent());
}

QTEST_GUILESS_MAIN(TstEcoIdManagers)
#include "tst_ecoidmanagers.moc"
