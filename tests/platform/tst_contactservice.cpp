// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

class TstContactService : public PlatformTest
{
    Q_OBJECT

private Q_SLOTS:
    void hearsOfTheWholeListOnce()
    {
        m_desk->heldBack += u"platformContact"_s;
        m_desk->changeState(u"Success"_s);
        m_context = std::make_unique<Context>(m_uuid);
        QTRY_VERIFY(m_context->isReady());
        listen();
        QCOMPARE(shown(*m_service), u"valid=true complete=false contactCount=0"_s);
        m_desk->tellList(u"platformContact"_s);
        QTRY_VERIFY(m_service->isComplete());
        QVERIFY(m_desk->settle());
        QCOMPARE(m_heard->take(), QStringList({u"list"_s, u"count | 3"_s}));

        QCOMPARE(handles(), u"ada bea cem"_s);

        const ContactService later(m_context.get());
        QVERIFY(later.isComplete());
        QCOMPARE(later.contacts(), m_service->contacts());
        QCOMPARE(m_heard->take(), QStringList{u"list"_s}); // the others hear of the list that was read for it

        m_desk->changeState(u"TemporaryError"_s);
        QVERIFY(m_desk->settle());
        QCOMPARE(m_heard->lines(), QStringList({u"valid | false"_s, u"count | 0"_s}));
    }

    void announcesWhatComesChangesAndGoes()
    {
        listen();
        const ContactService second(m_context.get());
        m_heard->note(second, &ContactService::contactUpdated, u"second"_s);
        m_heard->take();
        const Contact before = m_service->contact(u"bea"_s);
        m_desk->changeContact(u"bea"_s, R"({"displayName":"Bea"})");
        m_desk->changeContact(u"bea"_s, R"({"displayName":"Bea"})");
        m_desk->addContact(u"abe"_s);
        QTRY_COMPARE(m_heard->lines(),
                     QStringList({u"updated bea | Bea"_s, u"second bea"_s, u"enabled abe | abe"_s, u"count | 4"_s}));
        m_heard->take();
        QCOMPARE(before.displayName(), QString()); // a contact in hand stays as it was
        QCOMPARE(handles(), u"abe ada bea cem"_s);
        m_desk->tell(u"listRemove"_s, u"platformContact"_s, R"({"userId":"u-abe"})");
        QTRY_COMPARE(m_heard->lines(), QStringList{u"disabled abe"_s});
        m_heard->take();
        QCOMPARE(handles(), u"abe ada bea cem"_s); // still a contact
    }

    void takesTheLaterOfTwoRecordsWithOneHandle()
    {
        listen();
        m_desk->addContact(u"twin"_s, R"({"handle":"cem","displayName":"Twin"})");
        for (int time = 0; time < 2; ++time) { // as it comes, and when the list is read anew
            QTRY_COMPARE(m_service->contact(u"cem"_s).displayName(), u"Twin"_s);
            QCOMPARE(handles(), u"ada bea cem"_s);
            QVERIFY(m_service->refresh());
        }
    }

private:
    void listen()
    {
        m_service = std::make_unique<ContactService>(m_context ? m_context.get() : ready());
        m_heard = std::make_unique<Heard>();
        const auto& service = *m_service;
        m_heard->note(service, &ContactService::contactListUpdated, u"list"_s);
        m_heard->note(service, &ContactService::contactCountChanged, u"count"_s,
                      [&] { return QString::number(service.contactCount()); });
        m_heard->note(service, &ContactService::validChanged, u"valid"_s, [&] { return words(service.isValid()); });
        m_heard->note(service, &ContactService::contactUpdated, u"updated"_s,
                      [&] { return service.contact(u"bea"_s).displayName(); });
        m_heard->note(service, &ContactService::applicationEnabled, u"enabled"_s,
                      [&] { return service.contact(u"abe"_s).handle(); });
        m_heard->note(service, &ContactService::applicationDisabled, u"disabled"_s);
    }
    QString handles() const
    {
        QStringList handles;
        for (const Contact& contact : m_service->contacts())
            handles.append(contact.handle());
        return handles.join(u' ');
    }

    std::unique_ptr<ContactService> m_service;
    std::unique_ptr<Heard> m_heard;
};

ZEL_TEST(TstContactService)
#include "tst_contactservice.moc"
