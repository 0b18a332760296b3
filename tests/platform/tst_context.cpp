// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

class TstContext : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void registersOnlyInStatesThatAllowIt()
    {
        // The words of the service, with + where an application may register, and their states where these have other
        // names. The last are near misses: enumerators that are no words, another case, a blank.
        const QString rows =
            u"Unregistered+,NoDataConnection+,UnexpectedError+,InvalidUuid+,TemporaryError+,CancelledByUser+,"
            "Unknown,Pending,BlockedByUser,Expired,ZelDisabled,BlockedEnterprisePerimeter,BlockedByTov=BlockedByTOV,"
            "MaximumUsersReached=MaxDownloadsReached,MaximumAppsReached=MaxAppsReached,"
            "Allowed=Unknown,BlockedByTOV=Unknown,MaxAppsReached=Unknown,unregistered=Unknown,Success =Unknown"_s;
        const QByteArray request =
            R"({"registrationRequest":{"uuid":"6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10","silent":false}})";
        m_context = std::make_unique<Context>(m_uuid);
        settle();
        for (QString row : rows.split(u',')) {
            const bool isAllowed = row.endsWith(u'+');
            row.remove(u'+');
            play(u"state '%1'"_s.arg(row.section(u'=', 0, 0)));
            QCOMPARE(words(m_context->registrationState(), m_context->isAccessAllowed()),
                     row.section(u'=', -1) + u" false"_s);
            QCOMPARE(m_context->requestRegisterApplication(), isAllowed);
            QCOMPARE(m_context->requestRegisterApplicationSilent(), isAllowed);
            QCOMPARE(asked(), isAllowed ? QByteArrayList({request, QByteArray(request).replace("false", "true")})
                                        : QByteArrayList());
        }
    }

    void announcesAStateOnceToEveryContext()
    {
        m_context = std::make_unique<Context>(m_uuid);
        settle();
        m_heard->follow(*m_context);
        const Context second(QUuid::createUuid());
        m_heard->follow(second, [] { return u"second"_s; });
        play(u"state Pending; state Pending; permission zelInvites off; permission zelSetup off"_s);
        const QString told = u"registrationStateUpdated "_s;
        QCOMPARE(m_heard->take(), QStringList({told + u"Pending"_s, told + u"Pending | second"_s}));
        QVERIFY(!m_context->isZelSetup());
        // A UUID that is refused in a slot of the first is no state, of which the second would hear.
        const auto refused = [] { QVERIFY(!Context({}).requestRegisterApplication()); };
        connect(m_context.get(), &Context::registrationStateUpdated, this, refused, Qt::SingleShotConnection);
        play(u"state Expired"_s);
        QCOMPARE(m_heard->lines(), QStringList({told + u"Expired"_s, told + u"InvalidUuid"_s,
                                                told + u"InvalidUuid | second"_s, told + u"Expired | second"_s}));

        const Context late(m_uuid); // hears only of what changes
        const QSignalSpy heard(&late, &Context::registrationStateUpdated);
        settle();
        QCOMPARE(late.registrationState(), RegistrationState::Expired);
        QCOMPARE(heard.size(), 0);
    }

    void callsWhoeverWaitsWhenItIsReady()
    {
        ready();
        Context later(QUuid::createUuid());
        m_heard->follow(later, [&] { return words(later.isReady()); });
        const auto wait = [this](Context* context, const QObject* receiver, const QString& line) {
            whenReady(context, receiver, [this, line] { m_heard->add(line); });
        };
        wait(&later, this, u"at once"_s);
        play(u"state NoDataConnection; state Pending"_s);
        // The first who hears of it has a dialog open, in which it is over again.
        whenReady(&later, this, [&] {
            play(u"state Pending"_s);
            m_heard->add(u"closed"_s);
        });
        wait(&later, this, u"function"_s);
        whenReady(&later, this, &TstContext::noteMember);
        wait(&later, std::make_unique<QObject>().get(), u"receiver gone"_s);
        wait(std::make_unique<Context>(m_uuid).get(), this, u"context gone"_s);
        play(u"state Success"_s);
        play(u"state Success"_s);
        const QString told = m_heard->lines().join(u", "_s).remove(u"registrationStateUpdated "_s);
        QCOMPARE(told, u"at once, NoDataConnection | false, readyChanged | false, Pending | false, "
                       "Allowed | true, readyChanged | true, Pending | false, readyChanged | false, closed, "
                       "Allowed | true, readyChanged | true, function, member"_s);
    }

private:
    void noteMember() { m_heard->add(u"member"_s); }
};

ZEL_TEST(TstContext)
#include "tst_context.moc"
