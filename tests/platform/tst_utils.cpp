// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <vx/platform/zel/Utils.h>

class TstUtils : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void passesOnAnswersThatSayNothing()
    {
        const Utils utils(ready());
        Heard heard;
        heard.note(utils, &Utils::ecoIdUpdated, u"id"_s);
        heard.note(utils, &Utils::ecoIdStatusUpdated, u"status"_s);
        m_desk->send(u"requestEcoIdResponse"_s, {});
        // An enumerator and no word.
        m_desk->send(u"requestEcoIdStatusResponse"_s,
                     Desk::json(R"({"ecoId":"e","status":"PendingContactInviteExists"})"));
        QTRY_COMPARE(heard.lines(), QStringList({u"id"_s, u"status e Unknown"_s}));
    }
};

ZEL_TEST(TstUtils)
#include "tst_utils.moc"
