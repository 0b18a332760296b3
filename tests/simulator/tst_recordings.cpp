// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <simulator/recordings/Recording.h>
#include <simulator/recordings/Texts.h>

using zelcore::Recording;
using Kind = Recording::Entry::Kind;

namespace {

/// Two applications, a picture each way, an invitation, records that are cut, and a service that goes away. @ is the
/// name of whoever is sent to, # a number that is another one each time.
const char* const session = R"(
    A> tpaApi {}
    A> registrationRequest {"uuid":"#a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true}
    A< listChange "Success"
    A> requestListElements {"cookie":"cookie-#","elements":[{"userId":"user-anna"}],"type":"platformUser"}
    A< listElements "cookie-#"
    A< listChunk "last":true
    A> requestUserAvatar {"userId":"user-anna","streamId":"mine-#"}
    A< stream "mine-#"
    A< stream "mine-#" "last":true
    A= nonsense
    B> tpaApi {}
    B> requestEcoId {"ppid":"pp-anna"}
    B< requestEcoIdResponse
    A> change {"displayName":"Mine","avatarId":"hash[500]","avatarMimeType":"image/gif"}
    A< requestNewAvatarImage hash[500]
    A> stream {"id":"hash[500]","value":"data[500]","last":true}
    A< profileChangeResponse "Success"
    A< listChange hash[500]
    B< listChange hash[500]
    @ sys.socialplatform vx.action.INVITEZEL {"contactInvitation":{"ecoid":"eco-pp-zoe","name":"Mine"}}
    A> createProfileBoxItem {"text":"Mine, too","cookie":"own"}
    B< listAdd)";

const char* const comeback = "C> tpaApi {}\nC> requestEcoId {\"ppid\":\"later\"}\nC< requestEcoIdResponse";

/// Records with | for a line break, and what stands instead of what in an anonymous recording of them.
const char* const personal =
    R"(msg::zel|dat:json:{"registrationRequest":{"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"}}|
@platform|dat:json:{"stream":{"id":"first","value":"QU"}}|
@platform|dat:json:{"stream":{"id":"first","last":true,"value":"JD"}}|
@platform|dat:json:{"listChunk":{"a":[{"CountryCode":"DE","TimeZone":"Asia/Tokyo","name":"permission"}]}}|
@platform|dat:json:{"listAdd":{"elements":[{"currentStatus":"Reading","displayName":"Anna","handle":"anna"}]}}|
@platform|dat:json:{"listAdd":{"avatarId":"3c01bdbb26f358bab27f267924aa2c9a03fcfdb8","imageId":"7"}}|
@platform|dat:json:{"profileChangeResponse":{"error":"never ever","status":"Failure"}}|
msg::zel|dat:json:{"createProfileBoxItem":{"cookie":"level","status":"asleep","text":"anna"}}|
msg::zel|dat:json:{"requestListElements":{"cookie":"c","elements":[{"cookie":"level","name":"Anna"}]}}|
msg::zel|cut
@platform|dat:json:{"whole":{}}|more|)";
const char* const substitutes[] = {
    "6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b|QU|JD|first|DE|Asia/Tokyo|Reading|Anna|anna|"
    "3c01bdbb26f358bab27f267924aa2c9a03fcfdb8|never ever|level|asleep|msg::zel\ncut|{\"whole\":{}}\nmore\n",
    "1087ebe8-1ef8-5d97-8873-735b4949004d|iV|BO|id-3|ZZ|Etc/UTC|words 4|Person 5|id-6|"
    "22b1bd4f10536eed1d24735153d7630e4dc1393a|words 7xxx|words 8|words 9|############|##################"};

/// What applications say and hear in the session this time.
QByteArray sessionOf(int number)
{
    return QByteArray(session).replace('#', QByteArray::number(number));
}

} // namespace

/// A recording, and what is made of it.
class TstRecordings : public ServiceTest
{
    Q_OBJECT

protected Q_SLOTS:
    void init() { begin(); }

private Q_SLOTS:
    void replaysSoThatARecordingOfItIsTheSame()
    {
        QVERIFY(QFile::link(path(u"elsewhere"_s), path(u"1"_s)) && !m_simulator->record(path(u"1"_s)));
        QVERIFY(!QFile::exists(path(u"elsewhere"_s)) && QFile::remove(path(u"1"_s)));
        recordSession(1, true);
        QVERIFY(!(QFileInfo(path(u"1"_s)).permissions() & QFile::Permissions::fromInt(0x77))); // for the user alone
        for (const auto pace : {Simulator::ReplayPace::AtOnce, Simulator::ReplayPace::AsThen}) {
            const int number = pace == Simulator::ReplayPace::AtOnce ? 2 : 3;
            begin();
            QVERIFY(m_simulator->replay(path(u"1"_s), nullptr, pace));
            QVERIFY(m_simulator->record(path(QString::number(number))));
            QVERIFY(play(sessionOf(number).constData()));
            QTRY_VERIFY(application('A').closed); // as then, when the service went away
            QTRY_VERIFY(QFileInfo::exists(m_simulator->root() + u"/services/zelcore/platform"_s));
            QVERIFY(play(comeback));
            QTRY_COMPARE(m_simulator->replayAwaits(), QString());
            QCOMPARE(m_simulator->replayDifferences(), QStringList());
            QCOMPARE(lanes(number), lanes(1));
        }
        QCOMPARE(lanes(1).value(1).last(), QByteArray::number(int(Kind::Disconnected)));
        const Recording::Entry soon{Kind::Sent, 20, 1, {}, {}, "soon"}, late{Kind::Received, 600000, 1, {}, {}, "late"};
        const Recording slow{u"2026-03-01T09:30:00.000Z"_s, false, {{Kind::Connected, 0, 1}, soon, late}};
        begin();
        QVERIFY(slow.save(path(u"slow"_s)).isEmpty() &&
                m_simulator->replay(path(u"slow"_s), nullptr, Simulator::ReplayPace::AsThen, 0));
        QTRY_COMPARE(application('A').records.join(), "soon");
        QVERIFY(play("~") && m_simulator->replayAwaits().startsWith(u"application 1 has not sent a record of 4"_s));
        QVERIFY(play("A= other"));
        QTRY_VERIFY(m_simulator->replayDifferences().join(u' ').contains("(line 4): other bytes"_L1));
    }

    void tellsWhatAnApplicationDoesOtherwise()
    {
        const QByteArray start = "tpaApi {}";
        const QByteArray one = R"(requestEcoId {"ppid":"one"})";
        const QByteArray two = R"(requestEcoIdStatus {"ecoId":"two"})";
        const QByteArray other = R"(requestEcoId {"ppid":"other"})";
        const QByteArray last =
            R"(requestListElements {"cookie":"c","elements":[{"name":"a"},{"name":"c"}],"m":[1],"type":"global"})";
        const QByteArray fewer =
            R"(requestListElements {"cookie":"","elements":[{"name":"b"}],"m":{"a":1},"type":"global"})";
        const std::pair<QByteArrayList, QByteArray> cases[] = {
            {{start, one, two, last}, {}},
            {{start}, "has gone; then it still sent " + one + " (line 4)"},
            {{start, two, last}, "has not sent " + one + " (line 4), as it did then"},
            {{start, one, last}, "has not sent " + two + " (line 6), as it did then"},
            {{start, other, two, last}, "sent another " + one + R"( (line 4): "ppid" was "one", is "other")"},
            {{start, one, two, fewer},
             "sent another " + last + R"( (line 8): "cookie" was "c", is ""; )" +
                 R"("elements" had 2 elements, has 1; "elements[0].name" was "a", is "b"; "m" was [1], is {"a":1})"},
            {{start, one, fewer, two, last}, "also sent " + fewer + ", which it did not then"},
            {{start, one, "?", two, last},
             "also sent a record of 24 bytes that is not in the form, which it did not then"},
            {{start, one, other, two, last}, "also sent " + other + ", which it did not then"},
            {{start, two, one, last}, "sent " + one + " (line 4) after " + two + " (line 6); then it came before it"}};
        QVERIFY(play("A> tpaApi {}\nA.") && m_simulator->record(path(u"then"_s)));
        QVERIFY(play("A> " + start + "\nA> " + one + "\nA< requestEcoIdResponse\nA> " + two +
                     "\nA< requestEcoIdStatusResponse\nA> " + last + "\nA< listChunk"));
        for (const auto& [messages, told] : cases) {
            begin();
            const int patience = told.contains("has not") ? 50 : 60000;
            QVERIFY(m_simulator->replay(path(u"then"_s), nullptr, Simulator::ReplayPace::AtOnce, patience));
            const QSignalSpy finished(m_simulator.get(), &Simulator::replayFinished);
            QVERIFY(m_simulator->replayAwaits().endsWith(u"has not come"_s));
            QVERIFY(play("A> " + messages.join("\nA> ")));
            if (messages.size() == 1) {
                QTRY_COMPARE(m_simulator->replayAwaits().toUtf8(), "application 1 has not sent " + one + " (line 4)");
                application('A').disconnect();
            }
            QTRY_VERIFY2(finished.size() == 1, qPrintable(m_simulator->replayAwaits()));
            const QByteArray all = m_simulator->replayDifferences().join(u'\n').toUtf8();
            QCOMPARE(all, told.isEmpty() ? told : "application 1 " + told);
            QVERIFY(messages.size() == 1 || play("A< listChunk \"global\""));
            application('B').disconnect();
            QTRY_VERIFY(m_simulator->replayDifferences().join(u' ').contains("another app"_L1) && finished.size() == 1);
        }
    }

    void anonymisesSoThatItStillReplays()
    {
        Recording then{u"2026-03-01T09:30:00.000Z"_s, false, {{Kind::Connected, 0, 1}}};
        for (const QByteArray& line : QByteArray(personal).split('\n'))
            then.entries.append({Kind::Sent, 0, 1, {}, {}, QByteArray(line).replace('|', '\n')});
        QVERIFY(then.save(path(u"personal"_s)).isEmpty() &&
                Simulator::anonymise(path(u"personal"_s), path(u"nobody"_s)));
        QByteArray expected = bytesOf(u"personal"_s);
        const QByteArrayList words = QByteArray(substitutes[0]).split('|'), now = QByteArray(substitutes[1]).split('|');
        for (qsizetype i = 0; i < words.size(); ++i)
            expected.replace(words.at(i), now.at(i));
        QCOMPARE(bytesOf(u"nobody"_s).split('\n'), expected.split('\n'));
        recordSession(4, false);
        QVERIFY(Simulator::anonymise(path(u"4"_s), path(u"anonymous"_s)));
        const QString text = QString::fromUtf8(bytesOf(u"anonymous"_s));
        QVERIFY(text.contains(u"\"data\":\"{"_s) && !entriesOf(u"anonymous"_s).value(5).uuid.isEmpty());
        // Each application asks for whom the anonymous recording names, and brings words and pictures of its own.
        const QString id = QRegularExpression(u"userId\":\"([^\"]*)"_s).match(text).captured(1);
        const QString ppId = QRegularExpression(u"ppid\":\"([^\"]*)"_s).match(text).captured(1);
        for (const QByteArray& named : {ppId.toUtf8(), QByteArray("stranger")}) {
            begin();
            QVERIFY(m_simulator->replay(path(u"anonymous"_s)));
            QVERIFY(play(sessionOf(2).replace("user-anna", id.toUtf8()).replace("pp-anna", named).constData()));
            QTRY_VERIFY2(m_simulator->isReplayFinished(), qPrintable(m_simulator->replayAwaits()));
            const QStringList differences = m_simulator->replayDifferences();
            QCOMPARE(differences.size(), named == "stranger" ? 1 : 0);
            QVERIFY(differences.isEmpty() || differences.first().endsWith(u"was named, now \"stranger\""_s));
        }
        QVERIFY(m_simulator->isReplaying() && play("$ reset") && !m_simulator->isReplaying());
        QString error;
        QVERIFY(!Simulator::anonymise(path(u"4"_s), path(u"anonymous"_s), &error) && error.contains("already"_L1));
    }

    void refusesWhatIsDamagedOrForeign()
    {
        const QByteArray head = "{'format':'zelcore-recording','version':1,"
                                "'started':'2026-03-01T09:30:00.000Z','anonymous':false}\n";
        const QByteArray here = head + "{'kind':'connected','application':1,'time':5}\n";
        const QPair<QByteArray, const char*> cases[] = {
            {"", "line 1: is missing"},
            {"{'world':{}}\n", "line 1: format is not"},
            {"{'format':'zelcore-recording','version':2,'started':''}\n", "line 1: version is 2"},
            {QByteArray(head).replace("T09", "noon"), "line 1: started is no time"},
            {QByteArray(head).replace(",'anonymous':false", ""), "line 1: anonymous is neither"},
            {head + "{]\n", "line 2: is no JSON object"},
            {here.chopped(4), "line 2: is cut"},
            {here + "{'kind':'sung','time':6}\n", "line 3: kind is no kind"},
            {here + "{'kind':'back','time':6}\n", "line 3: kind cannot be"},
            {here + "{'kind':'invoked','application':1,'time':6,'target':'x','text':''}\n", "3: target is"},
            {here + "{'kind':'away','time':4}\n", "line 3: time is before"},
            {here + "{'kind':'away','time':6,'mood':1}\n", "line 3: mood means nothing"},
            {here + "{'kind':'sent','application':2,'time':6,'text':''}\n", "3: application names one that is not"},
            {here + here.mid(head.size()), "line 3: application names one that is connected"},
            {head + "{'kind':'connected','application':0,'time':5}\n", "line 2: application is no"},
            {here + "{'kind':'sent','application':1,'time':6}\n", "line 3: text is missing"},
            {here + "{'kind':'sent','application':1,'time':6,'base64':'QUJD*'}\n", "line 3: base64 is no"}};
        for (const auto& [text, hint] : cases) {
            QFile file(path(u"faulty"_s));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(text).replace('\'', '"'));
            file.close();
            QString error;
            QVERIFY(!m_simulator->replay(file.fileName(), &error) && !m_simulator->isReplaying());
            QVERIFY2(error.startsWith(file.fileName()) && error.contains(QLatin1String(hint)), qPrintable(error));
        }
        QVERIFY(play("A> tpaApi {}\nA."));
        QString error;
        QVERIFY(!m_simulator->replay(path(u"faulty"_s), &error) && error.contains("connected"_L1));
    }

private:
    void recordSession(int number, bool withEnd)
    {
        QVERIFY(m_simulator->record(path(QString::number(number))));
        QVERIFY(play("$ contact add anna picture=20000"));
        QVERIFY(play(sessionOf(number).constData()));
        if (withEnd)
            QVERIFY(play("$ truncate 9\n$ send cut {}\n$ raw any\n$ away\n$ back") && play(comeback));
        m_simulator->stopRecording();
    }

    QString path(const QString& name) const { return m_folder.filePath(name + u".jsonl"_s); }

    /// What each application did and heard, in order, and for 0 what targets were asked for and the service did: with
    /// the names of the session, and the members of a message in one order.
    QMap<int, QByteArrayList> lanes(int number) const
    {
        QMap<int, QByteArrayList> lanes;
        for (const Recording::Entry& entry : entriesOf(QString::number(number))) {
            const auto content = zelcore::contentOf(entry.bytes, false);
            QByteArray bytes = content ? zelcore::withContent(entry.bytes, false, *content) : entry.bytes;
            for (const char* const name : {"#a0fd1e9", "cookie-#", "mine-#"})
                bytes.replace(QByteArray(name).replace('#', QByteArray::number(number)), name);
            lanes[entry.kind == Kind::Invoked ? 0 : entry.application] += QByteArray::number(int(entry.kind)) + bytes;
        }
        return lanes;
    }

    QList<Recording::Entry> entriesOf(const QString& name) const
    {
        QString problem;
        return Recording::load(path(name), &problem).value_or(Recording()).entries;
    }

    QByteArray bytesOf(const QString& name) const
    {
        QByteArray bytes;
        for (const Recording::Entry& entry : entriesOf(name))
            bytes += entry.bytes;
        return bytes;
    }

    const QTemporaryDir m_folder;
};

ZEL_TEST(TstRecordings)
#include "tst_recordings.moc"
