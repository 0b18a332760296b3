// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <common/TestMain.h>

#include <vx/platform/zel/Utils.h>

class TstUtils : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void asksForEcoIdsAndTheirStatusAndPassesOnAnswersAsTheyCome()
    {
        Utils utils(ready());
        const Utils second(m_context.get());
        QVERIFY(utils.requestEcoId(u"p \"1\""_s) && utils.requestEcoIdStatus(u"e"_s));
        QVERIFY(!utils.requestEcoIdStatus(QString()));
        QCOMPARE(m_desk->written(), QByteArrayList({"{\"requestEcoId\":{\"ppid\":\"p \\\"1\\\"\"}}",
                                                    R"({"requestEcoIdStatus":{"ecoId":"e"}})"}));
        Heard heard;
        heard.note(utils, &Utils::ecoIdUpdated, u"id"_s);
        heard.note(second, &Utils::ecoIdUpdated, u"second"_s);
        heard.note(utils, &Utils::ecoIdStatusUpdated, u"status"_s);
        for (const char* body : {R"({"ppid":"never asked","ecoId":"2"})", "{}"})
            m_desk->send(u"requestEcoIdResponse"_s, Desk::json(body));
        // The last is an enumerator and no word.
        for (const char* status : {"Unknown", "ContactExists", "PendingContactExists", "PendingContactInviteExists"})
            m_desk->send(u"requestEcoIdStatusResponse"_s, {{u"ecoId"_s, u"e"_s}, {u"status"_s, QLatin1String(status)}});
        QVERIFY(m_desk->settle());
        QCOMPARE(heard.lines().mid(0, 8),
                 QStringList({u"id never asked 2"_s, u"second never asked 2"_s, u"id"_s, u"second"_s,
                              u"status e Unknown"_s, u"status e ContactExists"_s,
                              u"status e PendingContactInviteExists"_s, u"status e Unknown"_s}));
    }
};

ZEL_TEST(TstUtils)
#include "tst_utils.moc"
