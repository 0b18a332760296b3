// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

class TstContactService : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void hearsOfTheWholeListOnceAndOfWhoComesAndGoes()
    {
        m_heldBack = {"platformContact"};
        m_context = std::make_unique<Context>(m_uuid);
        play(u"state Success"_s);
        listen();
        QCOMPARE(shown(*m_contacts), u"valid=true complete=false contactCount=0"_s);
        m_heldBack.clear();
        askAgain();
        const QString all = u" | true true 3 ada=Ada bea=bea cem=cem"_s;
        QCOMPARE(m_heard->take(), QStringList({u"contactListUpdated"_s + all, u"completeChanged"_s + all,
                                               u"contactCountChanged"_s + all}));

        const ContactService later(m_context.get());
        QVERIFY(later.isComplete());
        QCOMPARE(later.contacts(), m_contacts->contacts());
        play(u"contact add abe"_s);
        QVERIFY(later.hasApplication(u"abe"_s));
        play(u"contact uninstall abe"_s);
        const QString more = u" | true true 4 abe=abe ada=Ada bea=bea cem=cem"_s; // whoever has left is still a contact
        QCOMPARE(m_heard->take(), // the others hear of a list that is read for one
                 QStringList({u"contactListUpdated"_s + all, u"applicationEnabled abe"_s + more,
                              u"contactCountChanged"_s + more, u"applicationDisabled abe"_s + more}));

        play(u"state TemporaryError"_s);
        QCOMPARE(m_heard->lines(), QStringList({u"validChanged | false false 0"_s, u"completeChanged | false false 0"_s,
                                                u"contactCountChanged | false false 0"_s}));
    }

    void takesTheLaterOfTwoRecordsWithOneHandle()
    {
        listen();
        play(
            uR"(send listAdd '{"type":"platformUser","elements":[{"userId":"u","handle":"cem","displayName":"Twin"}]}')"_s);
        play(uR"(send listAdd '{"type":"platformContact","elements":[{"userId":"u"}]}')"_s);
        for (int time = 0; time < 2; ++time) { // as it comes, and when the list is read anew
            QCOMPARE(shows(), u"true true 3 ada=Ada bea=bea cem=Twin"_s);
            QVERIFY(m_contacts->refresh());
        }
    }

private:
    void listen()
    {
        m_contacts = std::make_unique<ContactService>(m_context ? m_context.get() : ready());
        m_heard = std::make_unique<Heard>();
        m_heard->follow(*m_contacts, [this] { return shows(); });
    }
    QString shows() const
    {
        QStringList all{words(m_contacts->isValid(), m_contacts->isComplete(), m_contacts->contactCount())};
        for (const Contact& contact : m_contacts->contacts())
            all.append(contact.handle() + u'=' + contact.displayName());
        return all.join(u' ');
    }

    std::unique_ptr<ContactService> m_contacts;
    std::unique_ptr<Heard> m_heard;
};

ZEL_TEST(TstContactService)
#include "tst_contactservice.moc"
