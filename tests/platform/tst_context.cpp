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
        begin();
        for (QString row : rows.split(u',')) {
            const bool isAllowed = row.endsWith(u'+');
            row.remove(u'+');
            m_desk->changeState(row.section(u'=', 0, 0));
            QVERIFY(m_desk->settle());
            QCOMPARE(words(m_context->registrationState(), m_context->isAccessAllowed()),
                     row.section(u'=', -1) + u" false"_s);
            QCOMPARE(m_context->requestRegisterApplication(), isAllowed);
            QCOMPARE(m_context->requestRegisterApplicationSilent(), isAllowed);
            QCOMPARE(m_desk->written(), isAllowed
                                            ? QByteArrayList({request, QByteArray(request).replace("false", "true")})
                                            : QByteArrayList());
        }
    }

    void announcesAStateOnceToEveryContext()
    {
        begin();
        const Context second(QUuid::createUuid());
        m_heard->note(second, &Context::registrationStateUpdated, u"second"_s);
        m_desk->changeState(u"Pending"_s);
        m_desk->changeState(u"Pending"_s);
        m_desk->changePermission(R"({"zelInvites":false,"zelSetup":false})");
        QVERIFY(m_desk->settle());
        QCOMPARE(m_heard->take(), QStringList({u"Pending"_s, u"second Pending"_s}));
        QVERIFY(!m_context->isZelSetup());
        // A UUID that is refused in a slot of the first is no state, of which the second would hear.
        const auto refused = [] { QVERIFY(!Context({}).requestRegisterApplication()); };
        connect(m_context.get(), &Context::registrationStateUpdated, this, refused, Qt::SingleShotConnection);
        m_desk->changeState(u"Expired"_s);
        QTRY_COMPARE(m_heard->lines(),
                     QStringList({u"Expired"_s, u"InvalidUuid"_s, u"second InvalidUuid"_s, u"second Expired"_s}));

        const Context late(m_uuid); // hears only of what changes
        QSignalSpy told(&late, &Context::registrationStateUpdated);
        QVERIFY(m_desk->settle());
        QCOMPARE(late.registrationState(), RegistrationState::Expired);
        QCOMPARE(told.size(), 0);
    }

    void holdsAllowedBackUntilEverythingIsThere()
    {
        m_desk->heldBack = QStringList{u"platformContact"_s, u"requestUserAvatar"_s};
        begin();
        m_desk->changeState(u"Success"_s);
        const auto waitFor = [this](Context* context, const QObject* receiver, const QString& line) {
            whenReady(context, receiver, [this, line] { m_heard->add(line); });
        };
        waitFor(m_context.get(), this, u"function"_s);
        whenReady(m_context.get(), this, &TstContext::noteMember);
        m_heard->note(*m_context, &Context::readyChanged, u"ready"_s, [this] { return words(m_context->isReady()); });
        waitFor(m_context.get(), std::make_unique<QObject>().get(), u"receiver gone"_s);
        waitFor(std::make_unique<Context>(m_uuid).get(), this, u"context gone"_s);
        QVERIFY(m_desk->nextMessage().contains("requestUserAvatar"));
        // The service's word counts at once, the signal waits for what the other classes show.
        QVERIFY(m_context->isAccessAllowed() && !m_context->isReady());
        QCOMPARE(m_heard->lines(), QStringList());

        // All contacts arrive behind a dialog, before there is anybody to hear of them.
        std::unique_ptr<ContactService> contacts;
        connect(m_context.get(), &Context::registrationStateUpdated, m_heard.get(), [&] {
            m_desk->tellList(u"platformContact"_s);
            QVERIFY(m_desk->settle());
            contacts = std::make_unique<ContactService>(m_context.get());
            m_heard->note(*contacts, &ContactService::contactListUpdated, u"list"_s);
        });
        m_desk->tellStream(u"first"_s, "bytes");
        QTRY_VERIFY(m_heard->lines().contains(u"list"_s));
        QVERIFY(m_desk->settle());
        QCOMPARE(m_heard->lines(),
                 QStringList({u"Allowed"_s, u"function"_s, u"member"_s, u"ready | true"_s, u"list"_s}));
    }

    void callsWhoeverWaitsWhenItIsReady()
    {
        ready();
        Context later(QUuid::createUuid());
        Heard heard;
        heard.note(later, &Context::readyChanged, u"turns"_s);
        const auto wait = [&](const QString& line) { whenReady(&later, this, [&heard, line] { heard.add(line); }); };
        wait(u"at once"_s);
        m_desk->changeState(u"NoDataConnection"_s);
        m_desk->changeState(u"Pending"_s);
        QVERIFY(m_desk->settle());
        // The first who hears of it has a dialog open, in which it is over again.
        whenReady(&later, this, [&] {
            m_desk->changeState(u"Pending"_s);
            QVERIFY(m_desk->settle());
            heard.add(u"closed"_s);
        });
        wait(u"behind"_s);
        m_desk->changeState(u"Success"_s);
        QTRY_VERIFY(heard.lines().contains(u"closed"_s));
        QVERIFY(m_desk->settle());
        m_desk->changeState(u"Success"_s);
        QVERIFY(m_desk->settle());
        QCOMPARE(heard.lines(),
                 QStringList({u"at once"_s, u"turns"_s, u"turns"_s, u"turns"_s, u"closed"_s, u"turns"_s, u"behind"_s}));
    }

private:
    /// The context of an application that has heard the first state, unless that is held back.
    void begin()
    {
        m_context = std::make_unique<Context>(m_uuid);
        QSignalSpy states(m_context.get(), &Context::registrationStateUpdated);
        QTRY_VERIFY(!states.isEmpty() || m_desk->heldBack.contains(u"permission"_s));
        m_heard = std::make_unique<Heard>();
        m_heard->note(*m_context, &Context::registrationStateUpdated, QString());
    }
    void noteMember() { m_heard->add(u"member"_s); }

    std::unique_ptr<Heard> m_heard;
};

ZEL_TEST(TstContext)
#include "tst_context.moc"
