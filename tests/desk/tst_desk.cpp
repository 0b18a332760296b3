// SPDX-License-Identifier: Apache-2.0
#include <Desk.h>
#include <Simulation.h>

#include <common/SeededRandom.h>
#include <common/TestMain.h>
#include <common/WireText.h>
#include <simulator/RawApplication.h>

#include <QtCore/QMetaProperty>
#include <QtGui/QImage>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <functional>
#include <memory>
#include <vector>

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

/// What a window shows of something, and whether it has been told of another.
struct Shown
{
    bool isTold() const { return last.isNull() || there().isNull() || last == there() || !told->isEmpty(); }

    std::function<QVariant()> there;
    std::unique_ptr<QSignalSpy> told;
    QVariant last = there();
};

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
        m_models = {m_desk->wire(),          m_desk->applications(), m_desk->user(), m_desk->contacts(),
                    m_desk->shownContacts(), m_desk->contact(),      m_desk->box()};
        for (QAbstractItemModel* const model : m_models)
            new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest, m_desk.get());
    }

    void contactsFollowWhoeverChangesThem()
    {
        ContactModel& contacts = *m_desk->contacts();
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
            QStringList found = m_simulator->contactIds();
            found.removeIf([&](const QString& id) {
                const zelcore::Person person = m_simulator->contact(id);
                const QString searched = person.displayName + u'\n' + person.handle + u'\n' + person.personalMessage;
                return !searched.contains(text, Qt::CaseInsensitive);
            });
            QTRY_COMPARE(shown(*m_desk->shownContacts(), ContactModel::UserIdRole), found);
            QTRY_COMPARE(shown(contacts, ContactModel::UserIdRole), m_simulator->contactIds());
        }
        // However many come at once come in one piece.
        const QSignalSpy inserted(&contacts, &ContactModel::rowsInserted);
        contacts.generate(10000);
        QTRY_COMPARE(contacts.count(), m_simulator->contactCount());
        QCOMPARE(inserted.size(), 1);
    }

    void whatIsDoneIsShownWhoeverDoesIt()
    {
        std::vector<Shown> all;
        for (QAbstractItemModel* const model : m_models) {
            const auto firstRow = [=] {
                QStringList texts;
                for (int role = Qt::UserRole; model->rowCount() > 0 && role < Qt::UserRole + 7; ++role)
                    texts += model->index(0, 0).data(role).toString();
                return texts.isEmpty() ? QVariant() : texts;
            };
            all.push_back({firstRow, std::make_unique<QSignalSpy>(model, &QAbstractItemModel::dataChanged)});
        }
        QList<QObject*> objects{m_desk->service(), m_desk->timeline(), m_desk->weather()};
        objects.append(QList<QObject*>(m_models.cbegin(), m_models.cend()));
        for (QObject* const object : std::as_const(objects)) {
            for (int i = 0; i < object->metaObject()->propertyCount(); ++i) {
                const QMetaProperty property = object->metaObject()->property(i);
                if (property.hasNotifySignal())
                    all.push_back({[=] { return property.read(object); },
                                   std::make_unique<QSignalSpy>(object, property.notifySignal())});
            }
        }
        RawApplication application(m_simulator->root());
        const auto line = [this](const char* words) {
            return [=, this] { QVERIFY2(m_simulator->execute(QString::fromLatin1(words)), words); };
        };
        Service& service = *m_desk->service();
        Timeline& timeline = *m_desk->timeline();
        Weather& weather = *m_desk->weather();
        PersonModel& user = *m_desk->user();
        PersonModel& contact = *m_desk->contact();
        BoxModel& box = *m_desk->box();
        const std::function<void()> steps[] = {
            [&] { timeline.setPaused(true); },
            line("contact add anna displayName=Anna"),
            line("box add Hi"),
            [&] { QTRY_VERIFY(m_desk->contacts()->count() == 1 && box.count() == 1); },
            [&] { contact.setUserId(u"user-anna"_s); },
            [&] { QVERIFY(contact.setData(contact.index(1), u"Back at five"_s, PersonModel::ValueRole)); },
            [&] { contact.setPictureSize(3000); },
            line("contact change anna displayName=An"),
            [&] { m_desk->contacts()->setInstalled(u"user-anna"_s, false); },
            [&] { QVERIFY(user.setData(user.index(0), u"Robin at the desk"_s, PersonModel::ValueRole)); },
            [&] { user.setPictureSize(200); },
            [&] { QVERIFY(!user.setData(user.index(0), QString(62000, u'x'), PersonModel::ValueRole)); },
            [&] { QVERIFY(service.isComplaint()); },
            [&] { QVERIFY(box.setData(box.index(0), u"Level 3"_s, BoxModel::TextRole)); },
            [&] { QVERIFY(!box.setData(box.index(0), u"x"_s, BoxModel::IdRole)); },
            [&] { box.addIcon(); },
            [&] { box.addIcon(); },
            [&] { box.removeIcon(u"1"_s); },
            [&] { QCOMPARE(m_simulator->contact(u"user-anna"_s).personalMessage, u"Back at five"_s); },
            [&] { QCOMPARE(m_simulator->profile().displayName, u"Robin at the desk"_s); },
            [&] { QCOMPARE(contact.picture() + user.picture(), u"%L1 bytes%2 bytes"_s.arg(3000).arg(200)); },
            [&] { QCOMPARE(m_simulator->boxItems().first().text + box.icons().join(u' '), u"Level 32"_s); },
            [&] { QVERIFY(!timeline.open(u"/no/such/file"_s) && timeline.open(u"busy-day"_s)); },
            [&] { timeline.step(); }, // it waits for a registration
            [&] { QVERIFY(service.isComplaint() && timeline.scenario() == u"busy-day"_s && timeline.time() == 0); },
            line("state Expired"),
            [&] { QVERIFY(application.begin() && QTest::qWaitFor([&] { return m_simulator->clientCount() == 1; })); },
            [&] {
                application.send("registrationRequest",
                                 R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true})");
            },
            [&] { application.synchronize(); },
            [&] { QTRY_COMPARE(m_desk->applications()->count(), 1); },
            [&] { m_desk->applications()->setState(u"1"_s, u"Success"_s); },
            [&] { QVERIFY(weather.injectFault(false, int(Simulator::Fault::Garble), 0, u""_s, u"1"_s)); },
            [&] { QVERIFY(weather.refuseNext(u"x"_s, {}) && !weather.refuseNext(u"x"_s, u"x"_s)); },
            [&] { QCOMPARE(service.registrationState(), u"Success"_s); },
            [&] { timeline.step(); },
            [&] { QCOMPARE(timeline.time(), 500); },
            [&] { application.disconnect(); },
            [&] { QTRY_COMPARE(m_simulator->clientCount(), 0); },
            [&] { service.setAway(true); },
            line("back"),
            [&] { service.setZelInvites(false); },
            line("profile personalMessage Hi"),
            [&] { service.execute(u"registration manual"_s); },
            [&] { service.setRegistrationPolicy(1, u"Expired"_s, 7); },
            [&] { service.execute(u"latency 30"_s); },
            [&] { weather.setReading(false); },
            [&] { weather.setLatencyFrom(7); },
            [&] { m_desk->wire()->setHeld(true); },
            [&] { timeline.setPaused(false); },
            [&] { QVERIFY(!weather.isReading() && weather.latencyTo() == 30 && weather.latencyFrom() == 7); },
            [&] { QVERIFY(service.registrationDelay() == 7 && !service.isZelInvites() && !service.isAway()); },
            [&] { QTRY_VERIFY(m_desk->contacts()->count() > 1); },
            [&] { service.reset(); },
            [&] { QTRY_COMPARE(m_desk->contacts()->count() + box.count(), 0); },
            [&] { QVERIFY(!contact.isThere() && timeline.scenario().isEmpty() && weather.isReading()); },
            [&] { m_simulator->stop(); }};
        for (const auto& step : steps) {
            step();
            for (Shown& shown : all) {
                QTRY_VERIFY2(shown.isTold(), shown.told->signal());
                shown.last = shown.there();
                shown.told->clear();
            }
        }
        // What is in vain is shown no longer.
        const QSignalSpy moved(&service, &Service::awayChanged);
        const QSignalSpy typed(&user, &PersonModel::dataChanged);
        service.setAway(false);
        QVERIFY(!user.setData(user.index(0), u"x"_s, PersonModel::LabelRole));
        QVERIFY(!user.setData(user.index(8), u"many"_s, PersonModel::ValueRole)); // a number
        QVERIFY(moved.size() == 1 && typed.size() == 1 && service.isComplaint());
        QCOMPARE(service.notices().size(), 12);
        for (int i = 0; i < 300; ++i)
            service.note(QString::number(i));
        QCOMPARE(service.notices().size(), Service::mostNotices);
    }

    void theWireStaysWithinItsBoundsAndTakesTurns()
    {
        WireModel& wire = *m_desk->wire();
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
        const QStringList choices{u"1"_s, u"2"_s, u"requestEcoId"_s, u"requestEcoIdResponse"_s, u"tpaApi"_s};
        QTRY_COMPARE(wire.applications() + wire.types(), choices);
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

    void peopleWithFacesAreMadeUp()
    {
        m_simulator->stop();
        QString problem;
        QVERIFY(Simulation(*m_simulator).start({.contacts = 5, .state = u"Expired"_s, .isAlive = true}, &problem));
        QStringList people;
        for (const zelcore::Person& person : m_simulator->contacts() + QList{m_simulator->profile()}) {
            const QString face = m_simulator->picture(person.avatarId).isEmpty() ? u"none"_s : u"a face"_s;
            people += u"%1, %2, %3"_s.arg(person.displayName, person.statusMessage, face);
        }
        QCOMPARE(people, (QStringList{u"Ada Brandt, On my way to Lyon, a face"_s, u"美咲 高橋, In a meeting, a face"_s,
                                      u"Kim 🇫🇮 Storm, On the phone, none"_s, u"Chloë Engström, Away, a face"_s,
                                      u"मीरा शर्मा, At lunch, a face"_s, u"Robin Vale, , a face"_s}));
        const QImage face = QImage::fromData(m_simulator->picture(m_simulator->contacts().last().avatarId));
        QString colours; // a digit each: of the ground, shirt, hair, hair, neck, face, fringe, both eyes and the mouth
        QList<QRgb> known;
        for (const auto& [x, y] : {std::pair(4, 4),
                                   {64, 120},
                                   {64, 10},
                                   {33, 60},
                                   {58, 96},
                                   {64, 70},
                                   {64, 36},
                                   {54, 60},
                                   {74, 60},
                                   {64, 80}}) {
            if (!known.contains(face.pixel(x, y)))
                known += face.pixel(x, y);
            colours += QString::number(known.indexOf(face.pixel(x, y)));
        }
        QCOMPARE(colours, u"0122332445"_s);
        QTRY_COMPARE(shown(*m_desk->box(), BoxModel::IconRole), (QStringList{u"1"_s, QString()}));
        QCOMPARE(m_desk->box()->icons(), QStringList(u"1"_s));
        QCOMPARE(m_simulator->registrationOutcome(), u"Expired"_s);
        const QSignalSpy changed(m_simulator.get(), &Simulator::contactChanged);
        QTRY_VERIFY(!changed.isEmpty());
    }

private:
    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<Desk> m_desk;
    std::vector<QAbstractItemModel*> m_models;
};

ZEL_TEST(TstDesk)
#include "tst_desk.moc"
