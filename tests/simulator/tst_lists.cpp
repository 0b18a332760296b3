// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <QtCore/QMap>

using namespace Qt::StringLiterals;
using zelcore::Person;
using zelcore::Simulator;

namespace {

/// What an application makes of list messages, in the plainest way.
struct Mirror
{
    QStringList ids;
    QMap<QString, QJsonObject> records;

    void apply(const QJsonObject& message)
    {
        const QString what = message.keys().value(0);
        const QJsonObject body = message.value(what).toObject();
        const QString list = body.value("type"_L1).toString();
        for (const QJsonValue value : body.value("elements"_L1).toArray()) {
            const QJsonObject element = value.toObject();
            const QString id = element.value("userId"_L1).toString();
            if (list == "platformContact"_L1 && what == "listAdd"_L1)
                ids.append(id);
            else if (list == "platformContact"_L1 && what == "listRemove"_L1)
                ids.removeOne(id);
            else if (list == "platformUser"_L1)
                merge(id, element);
        }
    }

    void merge(const QString& id, const QJsonObject& element)
    {
        QJsonObject& record = records[id];
        for (auto member = element.begin(); member != element.end(); ++member)
            record.insert(member.key(), member.value());
    }
};

QJsonObject keysRequest(const QStringList& userIds)
{
    QJsonArray elements;
    for (const QString& id : userIds)
        elements.append(QJsonObject{{u"userId"_s, id}});
    return {{u"cookie"_s, u"12345"_s}, {u"elements"_s, elements}, {u"type"_s, u"platformUser"_s}};
}

} // namespace

/// Contacts and eco identifiers, as applications see them.
class TstLists : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
    void answersEmptyListsAndUnknownKeysWithOneLastChunk()
    {
        int chunks = 0;
        m_application->send("requestListAll", "{\"type\":\"platformContact\"}");
        QVERIFY(m_application->transfer("listAll", &chunks).isEmpty());
        QCOMPARE(chunks, 1);
        m_application->send(u"requestListElements"_s, keysRequest({u"nobody"_s}));
        QVERIFY(m_application->transfer("listElements", &chunks).isEmpty());
        QCOMPARE(chunks, 1);
        m_application->send(u"requestListElements"_s, keysRequest({}));
        QVERIFY(m_application->transfer("listElements", &chunks).isEmpty());
        QCOMPARE(chunks, 1);
    }

    void announcesEveryChangeSoThatAMirrorStaysEqual()
    {
        QRandomGenerator random = seededRandom();
        Mirror mirror;
        QStringList handles;
        QStringList gone;
        QSet<QString> asked;
        for (int step = 0; step < 400; ++step) {
            const int what = random.bounded(10);
            const QString handle = handles.isEmpty() ? QString() : handles.at(random.bounded(int(handles.size())));
            if (what < 4 || handles.isEmpty()) {
                Person person;
                person.handle = !gone.isEmpty() && random.bounded(2) ? gone.takeFirst() : u"h%1"_s.arg(step);
                person.displayName = u"from %1"_s.arg(step);
                const bool installed = random.bounded(3) != 0;
                const QString id = m_simulator->addContact(person, installed);
                QVERIFY(!id.isEmpty());
                // The records are not announced; an application asks for those that it has not.
                if (!asked.contains(id))
                    m_application->send(u"requestListElements"_s, keysRequest({id}));
                asked.insert(id);
                handles.append(person.handle);
            } else if (what < 7) {
                Person person = m_simulator->contact(handle);
                person.displayName = QString::number(random.generate());
                person.showBusy = random.bounded(2) == 0;
                QVERIFY(m_simulator->changeContact(person));
            } else if (what == 7) {
                m_simulator->removeContact(handle);
                handles.removeOne(handle);
                gone.append(handle);
            } else if (what == 8) {
                m_simulator->installApplication(handle);
            } else {
                m_simulator->uninstallApplication(handle);
            }
            // Records that are asked for later than they change must be the newest, whatever overtakes them.
            if (random.bounded(4) == 0)
                replay(mirror);
        }
        replay(mirror);
        QStringList ids;
        for (const Person& person : m_simulator->contacts()) {
            ids.append(person.userId);
            const QJsonObject record = mirror.records.value(person.userId);
            QCOMPARE(record.value("displayName"_L1).toString(), person.displayName);
            QCOMPARE(record.value("showBusy"_L1).toBool(), person.showBusy);
        }
        QCOMPARE(mirror.ids, ids);
    }

    void announcesOnlyTheMembersThatDiffer()
    {
        m_simulator->addContact(u"Anna"_s);
        m_application->drain();
        Person anna = m_simulator->contact(u"anna"_s);
        anna.personalMessage = u"„Grüße“ \"zitiert\"\n🙂"_s;
        m_simulator->changeContact(anna);
        m_simulator->changeContact(anna);
        QCOMPARE(m_application->take("listChange").value("elements"_L1).toArray().at(0).toObject(),
                 (QJsonObject{{u"userId"_s, u"user-anna"_s}, {u"personalMessage"_s, anna.personalMessage}}));
        QCOMPARE(m_application->drain(), QStringList());
    }

    void makesUpTheSamePeopleForTheSameSeed()
    {
        Simulator first;
        Simulator second;
        Simulator third;
        first.generateContacts(200, 3);
        second.generateContacts(200, 3);
        third.generateContacts(200, 4);
        QCOMPARE(first.contacts(), second.contacts());
        QVERIFY(first.contacts() != third.contacts());
    }

    void refusesContactsThatCannotBe()
    {
        QVERIFY(!m_simulator->addContact(u"Anna"_s).isEmpty());
        Person twin = m_simulator->contact(u"anna"_s);
        QVERIFY(m_simulator->addContact(twin).isEmpty());
        twin.userId = u"another"_s;
        QVERIFY(m_simulator->addContact(twin).isEmpty());
        QVERIFY(m_simulator->addContact(Person()).isEmpty());
        Person giant;
        giant.handle = u"giant"_s;
        giant.personalMessage = QString(70000, QLatin1Char('x'));
        QVERIFY(m_simulator->addContact(giant).isEmpty());
        QVERIFY(!m_simulator->removeContact(u"nobody"_s));
        QCOMPARE(m_refused->size(), 5);
        QCOMPARE(m_simulator->contactCount(), 1);
    }

    void livesAtTheRateAskedFor()
    {
        m_simulator->generateContacts(50, 1);
        m_application->drain();
        m_simulator->setActivity(Simulator::Activity::Changes, 1000, 9);
        for (int i = 0; i < 200; ++i)
            QCOMPARE(m_application->take("listChange").value("type"_L1).toString(), u"platformUser"_s);
        m_simulator->setActivity(Simulator::Activity::Uninstalls, 1000, 9);
        QTRY_VERIFY(m_simulator->contacts().isEmpty());
        m_simulator->setActivity(Simulator::Activity::Installs, 1000, 9);
        QTRY_VERIFY(m_simulator->contacts().size() > 40);
        m_simulator->setActivity(Simulator::Activity::Mixed, 0);
        m_application->drain();
        QCOMPARE(m_application->drain(), QStringList());
    }

private:
    void replay(Mirror& mirror)
    {
        m_application->synchronize();
        for (const QJsonObject& message : std::exchange(m_application->messages, {}))
            mirror.apply(message);
    }
};

ZEL_TEST(TstLists)
#include "tst_lists.moc"
