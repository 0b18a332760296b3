// SPDX-License-Identifier: Apache-2.0
#include <Desk.h>

#include <common/SeededRandom.h>
#include <common/TestMain.h>
#include <common/WireText.h>
#include <simulator/RawApplication.h>

#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using zelcore::Simulator;
using namespace zeldesk;
using namespace zeltools;

namespace {

/// What a view shows of a role.
QStringList shown(const QAbstractItemModel& model, int role)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, 0).data(role).toString());
    return texts;
}

} // namespace

class TstDesk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_desk.reset();
        m_simulator = std::make_unique<Simulator>();
        QVERIFY(m_simulator->start());
        m_desk = std::make_unique<Desk>(*m_simulator);
    }

    void contactsFollowWhoeverChangesThem()
    {
        ContactModel& contacts = *m_desk->contacts();
        const QAbstractItemModelTester tester(&contacts);
        const QAbstractItemModelTester filterTester(m_desk->shownContacts());
        QRandomGenerator random = seededRandom();
        const QStringList texts{{}, u"N"_s, u"name"_s, u"name 1"_s, u"Name 12"_s, u"e 1"_s, u"user-"_s};
        for (int turn = 0; turn < 20; ++turn) {
            QString text;
            for (int change = 0; change < 20; ++change) {
                if (change % 7 == 0) { // typed before changes are announced, and before others are made
                    text = texts.at(random.bounded(int(texts.size())));
                    m_desk->shownContacts()->setText(text);
                }
                const QStringList ids = m_simulator->contactIds();
                const QString id = ids.isEmpty() ? QString() : ids.at(random.bounded(int(ids.size())));
                zelcore::Person person = m_simulator->contact(id);
                const int kind = ids.isEmpty() ? 0 : random.bounded(6);
                if (kind == 0) {
                    contacts.generate(random.bounded(20) + 1);
                } else if (kind == 1) {
                    contacts.remove(id);
                } else if (kind == 2) {
                    contacts.setInstalled(id, !m_simulator->hasApplication(id));
                } else if (kind == 3) { // is last then, under the same key
                    m_simulator->removeContact(id);
                    m_simulator->addContact(person, false);
                } else {
                    person.displayName = u"Name %1"_s.arg(random.bounded(20));
                    m_simulator->changeContact(person);
                }
            }
            QStringList found;
            for (const QString& id : m_simulator->contactIds()) {
                const zelcore::Person person = m_simulator->contact(id);
                const QString searched = person.displayName + u'\n' + person.handle + u'\n' + person.personalMessage;
                if (searched.contains(text, Qt::CaseInsensitive))
                    found.append(id);
            }
            QTRY_COMPARE(shown(*m_desk->shownContacts(), ContactModel::UserIdRole), found);
            QTRY_COMPARE(shown(contacts, ContactModel::UserIdRole), m_simulator->contactIds());
        }
        // However many come at once come in one piece.
        const QSignalSpy inserted(&contacts, &ContactModel::rowsInserted);
        contacts.generate(10000);
        QTRY_COMPARE(contacts.count(), m_simulator->contactCount());
        QCOMPARE(inserted.size(), 1);
    }

    void whatIsChangedAtTheDeskReachesApplications()
    {
        m_simulator->setRegistrationPolicy(Simulator::RegistrationPolicy::Automatic);
        RawApplication application(m_simulator->root());
        application.begin();
        QTRY_COMPARE(m_desk->applications()->count(), 1);
        application.send("registrationRequest", R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true})");
        QTRY_COMPARE(m_desk->applications()->index(0).data(ApplicationModel::UuidRole).toString(),
                     u"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"_s);
        application.drain();

        const auto tells = [&](const char* text) {
            application.synchronize();
            return std::exchange(application.records, {}).join().contains(text);
        };
        PersonModel& user = *m_desk->user();
        QVERIFY(user.setData(user.index(0), u"Robin at the desk"_s, PersonModel::ValueRole));
        QVERIFY(tells("Robin at the desk"));
        QVERIFY(!user.setData(user.index(8), u"many"_s, PersonModel::ValueRole)); // a number
        QVERIFY(!user.setData(user.index(0), QString(62000, u'x'), PersonModel::ValueRole));
        QVERIFY(m_desk->service()->isComplaint());
        QCOMPARE(shown(user, PersonModel::ValueRole).first(), u"Robin at the desk"_s);

        PersonModel& contact = *m_desk->contact();
        contact.setUserId(m_desk->contacts()->add(u"Anna"_s));
        QVERIFY(tells("user-anna"));
        QVERIFY(contact.setData(contact.index(1), u"Back at five"_s, PersonModel::ValueRole));
        QVERIFY(tells("Back at five"));
        contact.setPictureSize(3000);
        QCOMPARE(contact.picture(), u"%L1 bytes"_s.arg(3000));
        m_desk->contacts()->remove(u"user-anna"_s);
        QCOMPARE(m_simulator->contactCount(), 0);

        BoxModel& box = *m_desk->box();
        box.addIcon();
        QVERIFY(box.add(u"Level 3"_s));
        QTRY_COMPARE(shown(box, BoxModel::TextRole), QStringList(u"Level 3"_s));
        QVERIFY(box.setData(box.index(0), u"1"_s, BoxModel::IconRole) && tells("\"imageId\":\"1\""));
        box.addIcon();
        box.removeIcon(u"1"_s);
        QCOMPARE(box.icons(), QStringList(u"2"_s));
        box.clear();
        QVERIFY(m_simulator->boxItems().isEmpty());

        m_desk->service()->setZelInvites(false);
        QVERIFY(tells("\"zelInvites\":false"));
        m_desk->service()->setRegistrationState(u"Expired"_s);
        QVERIFY(tells("Expired"));
        m_desk->applications()->setState(u"1"_s, u"Pending"_s);
        QTRY_COMPARE(shown(*m_desk->applications(), ApplicationModel::StateRole), QStringList(u"Pending"_s));
        m_desk->service()->setAway(true);
        QTRY_VERIFY(application.closed && m_desk->applications()->count() == 0);
        m_desk->service()->setAway(false);
        QVERIFY(!m_desk->service()->isAway() && !m_desk->service()->notices().first().isEmpty());
    }

    void whatAWindowShowsIsToldWhoeverChangesIt()
    {
        m_desk->contact()->setUserId(m_desk->contacts()->add(u"Anna"_s));
        const Service* const service = m_desk->service();
        const std::tuple<const char*, const QObject*, const char*> rows[] = {
            {"box add hi", m_desk->box(), SIGNAL(countChanged())},
            {"box change item-1 text=ho", m_desk->box(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QList<int>))},
            {"away", service, SIGNAL(awayChanged())},
            {"back", service, SIGNAL(awayChanged())},
            {"permission zelInvites off", service, SIGNAL(permissionsChanged())},
            {"state Expired", service, SIGNAL(registrationChanged())},
            {"profile displayName Robin", m_desk->user(), SIGNAL(changed())},
            {"contact change anna displayName=An", m_desk->contact(), SIGNAL(changed())},
            {"box icon 4 100", m_desk->box(), SIGNAL(iconsChanged())},
            {"reset", service, SIGNAL(permissionsChanged())},
            {"reset", m_desk->box(), SIGNAL(iconsChanged())},
            {"reset", m_desk->contact(), SIGNAL(changed())},
            {"reset", m_desk->timeline(), SIGNAL(scenarioChanged())}};
        for (const auto& [line, object, signal] : rows) {
            const QSignalSpy told(object, signal);
            QVERIFY2(m_simulator->execute(QString::fromLatin1(line)), line);
            QTRY_VERIFY2(!told.isEmpty(), line);
        }
        const QSignalSpy told(service, &Service::registrationChanged);
        QVERIFY(m_desk->service()->execute(u"registration manual"_s) && !told.isEmpty());
        m_simulator->stop();
        m_desk->service()->setAway(false); // there is nothing to come back
        QVERIFY(m_desk->service()->isComplaint());
    }

    void theTimelineGoesStepByStep()
    {
        Timeline& timeline = *m_desk->timeline();
        QSignalSpy told(&timeline, &Timeline::changed);
        timeline.setPaused(true);
        QVERIFY(m_simulator->isTimelinePaused() && told.size() == 1);
        QVERIFY(!timeline.open(u"/no/such/file"_s) && m_desk->service()->isComplaint());
        QVERIFY(timeline.open(u"busy-day"_s));
        timeline.step(); // it waits for a registration
        QVERIFY(m_desk->service()->isComplaint());
        RawApplication application(m_simulator->root());
        application.begin();
        application.send("registrationRequest", R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true})");
        application.synchronize();
        timeline.step();
        QCOMPARE(m_desk->service()->notices().first(), u"scenario: rate 20 mixed"_s);
        QVERIFY(timeline.time() == 500 && told.size() == 2);
        QVERIFY(timeline.open(u"busy-day"_s) && timeline.time() == 0 && told.size() == 3);
        m_simulator->reset();
        QCOMPARE(timeline.scenario(), QString());
    }

    void weatherIsMadeAndEndsWithTheWorld()
    {
        Weather& weather = *m_desk->weather();
        RawApplication application(m_simulator->root());
        application.begin();
        application.synchronize();
        QVERIFY(weather.refuseNext(u"createProfileBoxItem"_s, u"1"_s));
        application.send("createProfileBoxItem", R"({"text":"a","cookie":""})");
        application.synchronize();
        QVERIFY(m_desk->service()->isComplaint() && m_simulator->boxItems().isEmpty());
        QVERIFY(weather.injectFault(true, int(Simulator::Fault::Drop), 0, u"createProfileBoxItem"_s, {}));
        application.send("createProfileBoxItem", R"({"text":"b","cookie":""})");
        application.synchronize();
        QVERIFY(m_simulator->boxItems().isEmpty());
        QVERIFY(weather.injectFault(false, int(Simulator::Fault::Garble), 0, u""_s, u"1"_s));
        QCOMPARE(m_desk->service()->notices().first(), u"Garble to application 1: the next message"_s);

        QSignalSpy changed(&weather, &Weather::changed);
        QVERIFY(m_desk->service()->execute(u"latency 30"_s) && m_desk->service()->execute(u"reading off"_s));
        QCOMPARE(changed.size(), 2);
        QCOMPARE(weather.latencyTo(), 30);
        QVERIFY(!weather.isReading());
        m_desk->contacts()->generate(3);
        QVERIFY(m_desk->box()->add(u"c"_s));
        QTRY_VERIFY(m_desk->contacts()->count() == 3 && m_desk->box()->count() == 1);
        m_desk->contact()->setUserId(m_simulator->contactIds().first());
        QVERIFY(m_desk->contact()->isThere());
        m_desk->service()->reset();
        QVERIFY(!m_desk->contact()->isThere());
        QTRY_VERIFY(m_desk->contacts()->count() == 0 && m_desk->box()->count() == 0);
        QTRY_COMPARE(m_desk->applications()->count(), 0);
        QVERIFY(weather.latencyTo() == 0 && weather.isReading());
    }

    void theWireStaysWithinItsBoundsAndTakesTurns()
    {
        WireModel& wire = *m_desk->wire();
        const QAbstractItemModelTester tester(&wire, QAbstractItemModelTester::FailureReportingMode::QtTest);
        RawApplication application(m_simulator->root());
        application.begin();
        QTRY_COMPARE(wire.count(), 1);
        QSignalSpy inserted(&wire, &WireModel::rowsInserted);
        for (int i = 0; i < 12000; ++i)
            m_simulator->sendMessage(i % 2 ? u"odd"_s : u"even"_s, {{u"number"_s, i}});
        QTRY_COMPARE(wire.count(), WireModel::mostRecords);
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(wire.passed(), 12001);
        QVERIFY(wire.pretty(wire.count() - 1).contains("\"number\": 11999"_L1) && wire.pretty(wire.count()).isEmpty());

        wire.clear();
        wire.setText(u"even"_s); // looks at all that is kept
        wire.setText({});
        wire.setHeld(true);
        const QByteArray large(60000, 'x');
        for (int i = 0; i < 1000; ++i)
            m_simulator->sendRecord(large);
        QTRY_COMPARE(wire.passed(), 13001);
        QCOMPARE(wire.count(), 0);
        wire.setHeld(false);
        QTRY_COMPARE(wire.count(), WireModel::mostBytes / large.size());
        m_simulator->sendMessage(u"before"_s, {});
        wire.clear();
        m_simulator->sendMessage(u"after"_s, {});
        QTRY_COMPARE(shown(wire, WireModel::TypeRole), QStringList(u"after"_s));
    }

    void theWireShowsWhatIsAskedFor()
    {
        WireModel& wire = *m_desk->wire();
        RawApplication first(m_simulator->root());
        first.begin();
        first.synchronize();
        RawApplication second(m_simulator->root());
        second.begin();
        second.synchronize();
        QTRY_COMPARE(wire.applications(), (QStringList{u"1"_s, u"2"_s}));
        const int all = wire.count();
        wire.setApplication(u"2"_s);
        const QStringList numbers = shown(wire, WireModel::ApplicationRole);
        QVERIFY(numbers.size() < all && numbers.count(u"2"_s) == numbers.size());
        wire.setDirection(WireModel::FromApplications);
        QCOMPARE(shown(wire, WireModel::TypeRole), (QStringList{u"tpaApi"_s, u"requestEcoId"_s}));
        wire.setType(u"requestEcoId"_s);
        QCOMPARE(wire.count(), 1);
        // What comes is asked for, too.
        second.synchronize();
        first.synchronize();
        QTRY_COMPARE(wire.count(), 2);
        wire.setText(u"mark 2"_s);
        QCOMPARE(wire.count(), 1);
        QCOMPARE(wire.lastOfType(u"requestEcoId"_s), 0);
        QCOMPARE(wire.lastOfType(u"tpaApi"_s), -1);
    }

    void anyRecordCanBeRead()
    {
        const struct
        {
            QByteArray record;
            QString type;
            QString pretty;
            QString summary; ///< in 20 characters
        } rows[] = {
            {"msg::zel\ndat:json:{\"tpaApi\":{\"b\":[1,{}],\"a\":\"x\\\"{,\"}}\n", u"tpaApi"_s,
             u"{\n  \"tpaApi\": {\n    \"b\": [\n      1,\n      {}\n    ],\n    \"a\": \"x\\\"{,\"\n  }\n}"_s,
             u"{\"b\":[1,{}],\"a\":\"x\\\"…"_s},
            {"@platform\ndat:json:{\"" + QByteArray(64, 't') + "\":\"" + QByteArray(201, 'A') + "\"}\n",
             QString(64, u't'), u"{\n  \"%1\": \"%2…\" (201 characters)\n}"_s.arg(QString(64, u't'), QString(59, u'A')),
             u'"' + QString(19, u'A') + u'…'},
            {"@platform\ndat:json:{\"li", u"not a message"_s, u"{\n  \"li"_s, u"{\"li"_s}, // cut in a text
            {"dat:json:{\"a\":\"\\", u"a"_s, u"{\n  \"a\": \"\\"_s, u"\"\\"_s},            // cut behind a backslash
            {"dat:json:}][", u"not a message"_s, u"\n}\n][\n  "_s, u"}]["_s},
            {"", u"not a message"_s, {}, {}},
        };
        for (const auto& [record, type, pretty, summary] : rows) {
            const zelcore::WireRecord passed{0, 1, {}, {}, zelcore::WireRecord::Direction::ToApplication, record};
            QCOMPARE(typeOf(passed), type);
            QCOMPARE(prettyOf(passed), pretty);
            QCOMPARE(summaryOf(passed, 20), summary);
        }
        const zelcore::WireRecord invocation{0, 1, {}, u"t"_s, {}, R"({"target":"t"})"};
        QCOMPARE(typeOf(invocation), u"invocation"_s);
        QCOMPARE(summaryOf(invocation, 14), u"{\"target\":\"t\"}"_s);
    }

private:
    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<Desk> m_desk;
};

ZEL_TEST(TstDesk)
#include "tst_desk.moc"
