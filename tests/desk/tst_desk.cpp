// SPDX-License-Identifier: Apache-2.0
#include <Desk.h>
#include <Simulation.h>

#include <common/Random.h>
#include <common/WireText.h>
#include <simulator/ServiceTest.h>

#include <QtCore/QMetaProperty>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>
#include <QtQml/QJSEngine>
#include <QtTest/QAbstractItemModelTester>

#include <tuple>
#include <vector>

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

class TstDesk : public ServiceTest
{
    Q_OBJECT

public:
    Q_INVOKABLE bool does(const QString& dialogue) { return play(dialogue.toUtf8().constData()); }
    Q_INVOKABLE void leave() { application('A').disconnect(); }
    Q_INVOKABLE void stop() { m_simulator->stop(); }
    Q_INVOKABLE QString recording() const { return m_folder.filePath(u"r"_s); }
    Q_INVOKABLE void serve()
    {
        QString problem;
        const ServiceOptions options{
            .root = m_folder.path(), .scenario = u"first-steps"_s, .isPaused = true, .record = recording()};
        QVERIFY2(m_desk->begin(options, &problem), qPrintable(problem));
    }

private Q_SLOTS:
    void init()
    {
        m_desk.reset();
        begin();
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
        Service& service = *m_desk->service();
        PersonModel& user = *m_desk->user();
        QStringList said; // complaints behind "!"
        connect(&service, &Service::noticed, this, [&] {
            if (m_simulator->isTimelinePaused())
                said += (service.isComplaint() ? u"!"_s : QString()) +
                        service.notices().first().remove(m_folder.path()).left(11);
        });
        QJSEngine engine;
        for (QObject* const object : {static_cast<QObject*>(m_desk.get()), static_cast<QObject*>(this)}) {
            QJSEngine::setObjectOwnership(object, QJSEngine::CppOwnership);
            engine.globalObject().setProperty(object == this ? u"test"_s : u"desk"_s, engine.newQObject(object));
        }
        engine.evaluate(u"var {service, timeline, weather, wire, applications, user, contacts, contact, box} = desk"_s);
        // What compares is waited for; 257 is the role of what can be changed.
        const QString steps = QStringLiteral(R"(timeline.paused = true;
            test.does('$ contact add anna displayName=Anna\n$ box add Hi'); contacts.count + box.count == 2; contact.userId = 'user-anna';
            contact.setData(contact.index(1, 0), 'Back at five', 257); contact.setPictureSize(300);
            contact.picture == '300 bytes'; test.does('$ contact change anna displayName=An');
            contacts.setInstalled('user-anna', false); user.setData(user.index(0, 0), 'Robin', 257); user.busy = true;
            user.setPictureSize(1); user.setData(user.index(0, 0), 'x'.repeat(62000), 257);
            box.setData(box.index(0, 0), 'Level 3', 257); box.addIcon(); box.addIcon(); box.removeIcon('1');
            box.setData(box.index(0, 0), 'item-2', 256) == 0;
            box.icons == '2' && box.data(box.index(0, 0), 257) == 'Level 3' && user.name == 'Robin' && user.busy == 1;
            contact.data(contact.index(1, 0), 257) + user.picture == 'Back at five1 bytes'; user.setPictureSize(0);
            user.picture == 'none'; box.remove('item-1'); box.count == 0; contacts.live(50); contacts.count > 1 == 1;
            contacts.live(0); timeline.open('/no/such/file'); timeline.open('busy-day'); timeline.step();
            timeline.scenario + timeline.time == 'busy-day0'; service.registrationState = 'Expired';
            service.registrationState == 'Expired'; service.execute('registration manual');
            test.does('A> tpaApi {}\nA> register silent -> listChange'); applications.count == 1;
            contacts.invite('user-anna'); wire.types.includes('connectionInvitationReceived') == 1;
            contacts.add('Zoe'); contacts.rowOf('user-zoe') > 0 == 1; contacts.remove('user-zoe');
            contacts.rowOf('user-zoe') == -1;
            applications.setState('1', 'Success'); weather.injectFault(false, 4, 0, '', '1'); weather.refuseNext('x', '');
            weather.refuseNext('x', 'x'); service.registrationState == 'Success'; timeline.step(); timeline.time == 500;
            test.leave(); applications.count == 0; test.does('@ sys.zel.chathandler a d');
            service.notices[0] == 'sys.zel.chathandler was invoked: a'; service.away = true; service.away == 1;
            test.does('$ back'); service.zelInvites = false; test.does('$ profile personalMessage Hi');
            service.setRegistrationPolicy(1, 'Expired', 7); service.execute('latency 30'); weather.reading = false;
            weather.latencyFrom = 7; wire.held = true; timeline.paused = false;
            weather.reading + weather.latencyTo + weather.latencyFrom + service.registrationDelay == 44;
            service.zelInvites == 0 && service.away == 0; timeline.time > 500 == 1; timeline.paused = true;
            service.reset(); contacts.count == 0 && timeline.scenario == '' && weather.reading == 1; test.stop();
            test.serve(); service.recording == 1 && timeline.scenario == 'first-steps'; service.stopRecording();
            service.record(test.recording()); timeline.replay('file:/dev/null/r'); timeline.replay('file:' + test.recording()))");
        for (const QString& step : steps.simplified().split(u"; "_s)) {
            const auto isDone = [&] {
                const QJSValue value = engine.evaluate(step);
                return !value.isError() && (value.toBool() || !step.contains(u"=="_s));
            };
            QVERIFY2(QTest::qWaitFor(isDone), qPrintable(step));
            for (Shown& shown : all) {
                QVERIFY2(QTest::qWaitFor([&] { return shown.isTold(); }), qPrintable(step));
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
        QVERIFY(moved.size() == 1 && typed.size() == 1);
        const QString labels = shown(user, PersonModel::LabelRole).at(6) + shown(user, Qt::DisplayRole).at(5);
        QCOMPARE(labels, u"CountryTime zone"_s);
        QCOMPARE(
            said.join(u'|'),
            u"!the record |!/no/such/fi|opened busy|!no entry fo|registratio|Garble to a|Refuse of a|!\"x\" is neit|"
            "scenario: r|sys.zel.cha|latency 30|a world of |opened firs|recording i|the recordi|"
            "!/r: is ther|!/dev/null/r|/r is playe"_s);
        for (int i = 0; i < 300; ++i)
            service.note(QString::number(i));
        QCOMPARE(service.notices().size(), Service::mostNotices);
    }

    void theWireStaysWithinItsBoundsAndTakesTurns()
    {
        WireModel& wire = *m_desk->wire();
        QVERIFY(play("A> tpaApi {}"));
        QTRY_COMPARE(wire.count(), 1);
        QSignalSpy inserted(&wire, &WireModel::rowsInserted);
        for (int i = 0; i < 12000; ++i)
            m_simulator->sendMessage(u"type %1"_s.arg(i % 300), {{u"number"_s, i}});
        QTRY_COMPARE(wire.count(), WireModel::mostRecords);
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(wire.passed(), 12001);
        QCOMPARE(wire.types().size(), 200);
        QVERIFY(wire.pretty(wire.count() - 1).contains("\"number\": 11999"_L1) && wire.pretty(wire.count()).isEmpty());

        wire.clear();
        wire.setText(u"type 7"_s); // looks at all that is kept
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
        QVERIFY(play("A> tpaApi {}\nA.\nB> tpaApi {}\nB."));
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
        const QSignalSpy others(&wire, &WireModel::choicesChanged);
        QVERIFY(play("B.\nA."));
        QTRY_COMPARE(wire.count(), 2);
        wire.setText(u"mark 2"_s);
        QCOMPARE(wire.count(), 1);
        QCOMPARE(wire.lastOfType(u"requestEcoId"_s), 0);
        QCOMPARE(wire.lastOfType(u"tpaApi"_s), -1);
        QVERIFY(others.isEmpty());
    }

    void anyRecordCanBeRead()
    {
        // Each record, its type, how it reads, and its summary in 20 characters.
        const std::tuple<QByteArray, QString, QString, QString> rows[] = {
            {"msg::zel\ndat:json:{\"tpaApi\":{\"b\":[[],1,{}],\"a\":\"x\\\"{,\"}}\n", u"tpaApi"_s,
             u"{\n  \"tpaApi\": {\n    \"b\": [\n      [],\n      1,\n      {}\n    ],\n    \"a\": \"x\\\"{,\"\n  }\n}"_s,
             u"{\"b\":[[],1,{}],\"a\":\"…"_s},
            {"dat:json:{\"" + QByteArray(64, 't') + "\":[\"" + QByteArray(201, 'A') + "\",\"" + QByteArray(201, 'C') +
                 "\"]}",
             QString(64, u't'),
             u"{\n  \"%1\": [\n    \"%2…\" (201 characters),\n    \"%3…\" (201 characters)\n  ]\n}"_s.arg(
                 QString(64, u't'), QString(59, u'A'), QString(59, u'C')),
             u"[\"%1…"_s.arg(QString(18, u'A'))},
            {"@platform\ndat:json:{\"li", u"not a message"_s, u"{\n  \"li"_s, u"{\"li"_s}, // cut in a text
            {"dat:json:{\"a\":\"\\", u"a"_s, u"{\n  \"a\": \"\\"_s, u"\"\\"_s},            // cut behind a backslash
            {"dat:json:{}", u"not a message"_s, u"{}"_s, u"{}"_s},
            {"dat:json:{\"\":1}", u"not a message"_s, u"{\n  \"\": 1\n}"_s, u"1"_s},
            {'"' + QByteArray(200, 'B') + '"', u"not a message"_s, u"\"%1\""_s.arg(QString(200, u'B')),
             u'"' + QString(19, u'B') + u'…'},
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
        m_desk->contacts()->generate(1);
        QStringList people;
        for (const zelcore::Person& person : m_simulator->contacts() + QList{m_simulator->profile()}) {
            const QImage face = QImage::fromData(m_simulator->picture(person.avatarId));
            const QString ground = face.isNull() ? u"none"_s : face.pixelColor(4, 4).name();
            people += u"%1, %2, %3, %4"_s.arg(person.displayName, person.statusMessage, ground).arg(person.showBusy);
        }
        QCOMPARE(people,
                 (QStringList{u"Ada Brandt, On my way to Lyon, #e1d4a3, 1"_s, u"美咲 高橋, In a meeting, #bee1a3, 0"_s,
                              u"Kim 🇫🇮 Storm, On the phone, none, 0"_s, u"Chloë Engström, Away, #a3d9e1, 0"_s,
                              u"मीरा शर्मा, At lunch, #a3a8e1, 0"_s, u"Dario Castellón, On the phone, #6dd6e1, 0"_s,
                              u"Robin Vale, , #a3e1b9, 0"_s}));
        const QImage face = QImage::fromData(m_simulator->picture(m_simulator->contacts().at(4).avatarId));
        QString colours; // the ground, shirt, hair, hair, neck, face, below the fringe, fringe, both eyes, the mouth
        for (const QString& point : u"4,4 64,120 64,10 33,60 56,96 64,70 80,41 64,36 54,60 74,60 64,80"_s.split(u' '))
            colours += face.pixelColor(point.section(u',', 0, 0).toInt(), point.section(u',', 1).toInt()).name();
        QCOMPARE(colours, u"#a3a8e1#96794f#5f3d25#5f3d25#e1c3a8#e1c3a8#e1c3a8#5f3d25#282222#282222#783232"_s);
        QVERIFY(face.convertToFormat(QImage::Format_Indexed8).colorCount() > 6); // its edges are smooth
        QTRY_COMPARE(shown(*m_desk->box(), BoxModel::IconRole), (QStringList{u"1"_s, QString()}));
        QCOMPARE(m_desk->box()->icons(), QStringList(u"1"_s));
        QCOMPARE(m_simulator->registrationOutcome(), u"Expired"_s);
        const QSignalSpy changed(m_simulator.get(), &Simulator::contactChanged);
        QTRY_VERIFY(!changed.isEmpty());
        for (int count = 0; count < 3; ++count) {
            Simulator other;
            if (count == 2)
                other.setRoot(m_simulator->root()); // where another one serves
            QCOMPARE(Simulation(other).start({.contacts = count, .state = {}}, &problem), count < 2);
            QCOMPARE(u"%1 %2"_s.arg(other.contactCount()).arg(other.registrationOutcome()), u"%1 Success"_s.arg(count));
        }
    }

private:
    const QTemporaryDir m_folder;
    std::unique_ptr<Desk> m_desk;
    std::vector<QAbstractItemModel*> m_models;
};

ZEL_TEST(TstDesk)
#include "tst_desk.moc"
