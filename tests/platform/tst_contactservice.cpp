// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

class TstContactService : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void hearsOfTheWholeListOnceAndOfWhoComesAndGoes()
    {
        m_service->heldBack += u"platformContact"_s;
        m_service->changeState(u"Success"_s);
        m_context = std::make_unique<Context>(m_uuid);
        QTRY_VERIFY(m_context->isReady());
        listen();
        QCOMPARE(shown(*m_contacts), u"valid=true complete=false contactCount=0"_s);
        m_service->tellList(u"platformContact"_s);
        QTRY_VERIFY(m_contacts->isComplete());
        QVERIFY(m_service->settle());
        const QString all = u" | true true 3 ada=Ada bea= cem="_s;
        QCOMPARE(m_heard->take(), QStringList({u"contactListUpdated"_s + all, u"completeChanged"_s + all,
                                               u"contactCountChanged"_s + all}));

        const ContactService later(m_context.get());
        QVERIFY(later.isComplete());
        QCOMPARE(later.contacts(), m_contacts->contacts());
        m_service->addContact(u"abe"_s);
        QTRY_VERIFY(later.hasApplication(u"abe"_s));
        m_service->tell(u"listRemove"_s, u"platformContact"_s, R"({"userId":"u-abe"})");
        QVERIFY(m_service->settle());
        const QString more = u" | true true 4 abe= ada=Ada bea= cem="_s; // whoever has left is still a contact
        QCOMPARE(m_heard->take(), // the others hear of a list that is read for one
                 QStringList({u"contactListUpdated"_s + all, u"applicationEnabled abe"_s + more,
                              u"contactCountChanged"_s + more, u"applicationDisabled abe"_s + more}));

        m_service->changeState(u"TemporaryError"_s);
        QVERIFY(m_service->settle());
        QCOMPARE(m_heard->lines(), QStringList({u"validChanged | false false 0"_s, u"completeChanged | false false 0"_s,
                                                u"contactCountChanged | false false 0"_s}));
    }

    void takesTheLaterOfTwoRecordsWithOneHandle()
    {
        listen();
        m_service->addContact(u"twin"_s, R"({"handle":"cem","displayName":"Twin"})");
        for (int time = 0; time < 2; ++time) { // as it comes, and when the list is read anew
            QTRY_COMPARE(m_contacts->contact(u"cem"_s).displayName(), u"Twin"_s);
            QCOMPARE(shows(), u"true true 3 ada=Ada bea= cem=Twin"_s);
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
