// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <vx/platform/zel/ContactService.h>

using namespace vx::platform::zel;

/// One process, one bridge: the cases build on each other.
class TstContactService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hearsOfTheWholeListOnce()
    {
        m_desk.heldBack = QStringList{QStringLiteral("platformContact")};
        m_context = std::make_unique<Context>(QUuid::createUuid());
        QVERIFY(m_desk.becomeAllowed());
        m_service = std::make_unique<ContactService>(m_context.get());
        QSignalSpy lists(m_service.get(), &ContactService::contactListUpdated);
        QSignalSpy counts(m_service.get(), SIGNAL(contactCountChanged()));
        QSignalSpy installs(m_service.get(), &ContactService::applicationEnabled);
        QCOMPARE(m_service->contactCount(), 0);

        QJsonArray ids;
        for (const char* name : {"bea", "ada", "cem"}) {
            m_desk.contact(QString::fromLatin1(name));
            ids.append(Desk::contactId(QString::fromLatin1(name)));
        }
        m_desk.contact(QStringLiteral("ada"),
                       R"({"ppid":"p","appVersion":"3","displayName":"Ada","personalMessage":"Hi","currentStatus":"out",
                           "showBusy":true,"platformVersion":150,"clientVersion":9})");
        m_desk.lists.insert(QStringLiteral("platformContact"), ids);
        m_desk.heldBack.clear();
        m_desk.sendList(QStringLiteral("platformContact"));

        QTRY_COMPARE(lists.size(), 1);
        QVERIFY(m_service->isValid());
        QCOMPARE(m_service->contactCount(), 3);
        QVERIFY(m_desk.settle());
        QCOMPARE(lists.size(), 1);
        QCOMPARE(counts.size(), 1);
        QCOMPARE(installs.size(), 0);
    }

    void showsRecordsByHandleAndFieldByField()
    {
        const Contact ada = m_service->contact(QStringLiteral("ada"));
        QCOMPARE(ada.handle(), QStringLiteral("ada"));
        QCOMPARE(ada.ppId(), QStringLiteral("p"));
        QCOMPARE(ada.applicationVersion(), QStringLiteral("3"));
        QCOMPARE(ada.displayName(), QStringLiteral("Ada"));
        QCOMPARE(ada.personalMessage(), QStringLiteral("Hi"));
        QCOMPARE(ada.statusMessage(), QStringLiteral("out"));
        QCOMPARE(ada.status(), UserStatus::Busy);
        QCOMPARE(ada.platformVersion(), 150);
        QCOMPARE(ada.sdkVersion(), 150);
        QCOMPARE(ada.zelVersion(), 9);
        QVERIFY(m_service->containsContact(ada));

        QStringList handles;
        const QList<Contact> contacts = m_service->contacts();
        for (const Contact& contact : contacts)
            handles.append(contact.handle());
        QCOMPARE(handles, QStringList({QStringLiteral("ada"), QStringLiteral("bea"), QStringLiteral("cem")}));
    }

    void announcesAChange()
    {
        ContactService second(m_context.get());
        QSignalSpy updates(m_service.get(), &ContactService::contactUpdated);
        QSignalSpy others(&second, &ContactService::contactUpdated);
        QSignalSpy counts(m_service.get(), SIGNAL(contactCountChanged()));
        const Contact before = m_service->contact(QStringLiteral("bea"));
        QObject owner;
        connect(m_service.get(), &ContactService::contactUpdated, &owner, [&](const QString& handle) {
            QCOMPARE(m_service->contact(handle).displayName(), QStringLiteral("Bea"));
        });
        change(QStringLiteral("bea"), R"({"displayName":"Bea"})");
        change(QStringLiteral("bea"), R"({"displayName":"Bea"})");
        QVERIFY(m_desk.settle());
        QCOMPARE(handlesOf(updates), QStringList(QStringLiteral("bea")));
        QCOMPARE(handlesOf(others), QStringList(QStringLiteral("bea")));
        QCOMPARE(counts.size(), 0);
        QCOMPARE(before.displayName(), QString()); // a contact in hand stays as it was
    }

    void announcesWhoInstallsAndRemovesTheApplication()
    {
        QSignalSpy installs(m_service.get(), &ContactService::applicationEnabled);
        QSignalSpy removals(m_service.get(), &ContactService::applicationDisabled);
        QSignalSpy counts(m_service.get(), SIGNAL(contactCountChanged()));
        const QString dan = QStringLiteral("dan");
        QObject owner;
        connect(m_service.get(), &ContactService::applicationEnabled, &owner,
                [&](const QString& handle) { QCOMPARE(m_service->contact(handle).handle(), handle); });
        m_desk.contact(dan);
        m_desk.sendElements(QStringLiteral("listAdd"), QStringLiteral("platformContact"), {Desk::contactId(dan)});
        QTRY_COMPARE(handlesOf(installs), QStringList(dan));
        QCOMPARE(m_service->contactCount(), 4);
        QCOMPARE(counts.size(), 1);

        m_desk.sendElements(QStringLiteral("listRemove"), QStringLiteral("platformContact"), {Desk::contactId(dan)});
        QTRY_COMPARE(handlesOf(removals), QStringList(dan));
        QCOMPARE(m_service->contact(dan).handle(), dan); // still a contact
        QCOMPARE(m_service->contactCount(), 4);
    }

    void announcesNoPictureAtOnce()
    {
        QSignalSpy pictures(m_service.get(), &ContactService::displayPictureUpdated);
        QVERIFY(m_service->requestDisplayPicture(QStringLiteral("ada")));
        QCOMPARE(pictures.size(), 1);
        QCOMPARE(pictures.at(0).at(0).toString(), QStringLiteral("ada"));
        QCOMPARE(pictures.at(0).at(1).value<ImageType::Type>(), ImageType::Unsupported);
        QVERIFY(!m_service->requestDisplayPicture(QStringLiteral("nobody")));
        QCOMPARE(pictures.size(), 1);
        QVERIFY(m_desk.nothingWritten());
    }

    void tellsBindingsOfLostAccess()
    {
        QSignalSpy counts(m_service.get(), SIGNAL(contactCountChanged()));
        QSignalSpy valid(m_service.get(), SIGNAL(validChanged()));
        m_desk.changeState(QStringLiteral("TemporaryError"));
        QTRY_COMPARE(counts.size(), 1);
        QCOMPARE(valid.size(), 1);
        m_desk.changeState(QStringLiteral("Success"));
        QTRY_COMPARE(counts.size(), 2);
        QCOMPARE(valid.size(), 2);
        QCOMPARE(m_service->contactCount(), 4);
    }

    void showsWhatIsThereToALaterService()
    {
        QSignalSpy lists(m_service.get(), &ContactService::contactListUpdated);
        ContactService later(m_context.get());
        QVERIFY(later.isValid());
        QCOMPARE(later.contacts(), m_service->contacts());
        QCOMPARE(lists.size(), 1); // the others hear of the list that was read for it
    }

    void takesTheLaterOfTwoRecordsWithOneHandle()
    {
        const QString cem = QStringLiteral("cem");
        const int count = m_service->contactCount();
        m_desk.contact(QStringLiteral("twin"), R"({"handle":"cem","displayName":"Twin"})");
        m_desk.sendElements(QStringLiteral("listAdd"), QStringLiteral("platformContact"),
                            {Desk::contactId(QStringLiteral("twin"))});
        QTRY_COMPARE(m_service->contact(cem).displayName(), QStringLiteral("Twin"));
        QCOMPARE(m_service->contactCount(), count);
        const ContactService anew(m_context.get());
        QCOMPARE(m_service->contact(cem).displayName(), QStringLiteral("Twin"));
        QCOMPARE(m_service->contactCount(), count);
    }

private:
    static QStringList handlesOf(const QSignalSpy& spy)
    {
        QStringList handles;
        for (const QList<QVariant>& arguments : spy)
            handles.append(arguments.at(0).toString());
        return handles;
    }
    void change(const QString& name, const QByteArray& members)
    {
        m_desk.sendElements(QStringLiteral("listChange"), QStringLiteral("platformUser"),
                            {m_desk.contact(name, members)});
    }

    Desk m_desk;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<ContactService> m_service;
};

QTEST_GUILESS_MAIN(TstContactService)
#include "tst_contactservice.moc"
