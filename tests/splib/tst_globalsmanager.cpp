// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/GlobalsManager.h>

#include "Stage.h"

namespace {

struct GlobalsStage : Stage
{
    zelsplib::GlobalsManager<RecordingHandler, RecordingHandler> manager{multiplexer, stream, &gates};

    GlobalsStage()
    {
        manager.registrationEventHandler().log = &log;
        manager.userProfileEventHandler().log = &log;
        const auto told = [this](const char* message) {
            return [this, message](auto& words) {
                pipe->inject("{'@':{'type':'global','id':'','elements':[{'name':'@','value':{@}}],'last':true}}",
                             {message, words[0].toUtf8(), words.value(1).toUtf8()});
            };
        };
        const auto injected = [this](const char* form) {
            return [this, form](auto& words) { pipe->inject(form, {words[0].toUtf8()}); };
        };
        steps[u"init"_s] = [this](auto&) { manager.init(); };
        steps[u"answer"_s] = [this, chunk = told("listChunk")](auto& words) {
            pipe->inject("{'listElements':{'type':'global','cookie':'@'}}", {pipe->cookie()});
            chunk(words);
        };
        steps[u"change"_s] = told("listChange");
        steps[u"unasked"_s] = told("listAdd");
        steps[u"elsewhere"_s] = injected("{'listChunk':{@,'elements':[{'name':'permission','value':{}}],'last':true}}");
        steps[u"set"_s] = [this](auto& words) { manager.setUserProfileAvatar(words[0].toUtf8()); };
        steps[u"response"_s] = injected("{'profileChangeResponse':@}");
        steps[u"wanted"_s] = injected("{'requestNewAvatarImage':@}");
        steps[u"offer"_s] = [this](auto& words) { // null and a size, or bytes
            const QByteArray data = words.value(0).toUtf8();
            const bool isNull = data == "null";
            note(manager.setProfileAvatar(zelsplib::Avatar::Gif, isNull ? nullptr : data.constData(),
                                          isNull ? words[1].toUInt() : unsigned(data.size())));
        };
        steps[u"show"_s] = [this](auto&) {
            const auto [showAppBox, zelInvites, state, zelSetup] = manager.getPermissions();
            log.add(u"%1 %2 %3 %4"_s.arg(showAppBox).arg(zelInvites).arg(state).arg(zelSetup).simplified());
        };
        steps[u"ask"_s] = [this](auto&) { manager.requestProfileAvatar(); };
        steps[u"bytes"_s] = [this](auto&) {
            log.add((u"has "_s + QString::fromUtf8(manager.getMyAvatar())).trimmed());
        };
        steps[u"register"_s] = [this](auto&) { manager.sendRegistration(u"u-1"_s, false); };
    }
};

const auto registered = uR"(
    turn                                                -> requestListElements permission global
    answer permission "registrationState":"Success"     -> gate registered
    init
    turn                                                -> requestListElements platformProfile global
)"_s;

const auto withPicture = registered + uR"(
    answer platformProfile "userId":"me","displayName":"A","avatarId":"p0","avatarMimeType":"image/png" -> gate profile; requestUserAvatar me p0
    stream p0 old                                       -> picture p0 image/png old; gate picture
)"_s;

} // namespace

class TstGlobalsManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsItsStory_data();
    void tellsItsStory()
    {
        QFETCH(const QString, story);
        GlobalsStage stage;
        stage.play(story);
    }
};

void TstGlobalsManager::tellsItsStory_data()
{
    QTest::addColumn<QString>("story");
    const auto row = [](const char* name, const char* story, const QString& before = {}) {
        QTest::newRow(name) << before + QLatin1String(story);
    };
    const auto pictureRow = [row](const char* name, const char* story) { row(name, story, withPicture); };

    row("what is of no type stays as it was", R"(
        turn                                             -> requestListElements permission global
        show                                             -> 0 0 0
        answer permission "showAppBox":1,"zelInvites":true,"registrationState":7
        show                                             -> 0 1 0
        change permission "showAppBox":true,"registrationState":"Expired","zelSetup":true -> state Expired
        change other "registrationState":"Success"
        show                                             -> 1 1 Expired 1
    )");
    row("a registration of which nothing is heard", R"(
        turn                                             -> requestListElements permission global
        answer permission "registrationState":"Unregistered" -> state Unregistered
        register                                         -> registrationRequest u-1 false
        change permission "showAppBox":true,"registrationState":"Unregistered"
        wait 30                                          -> requestListElements permission global
        elsewhere "type":"platformUser"
        elsewhere "type":"global","id":"x"
        wait 60                                          -> requestListElements permission global
        answer permission "registrationState":"Unregistered"
        wait 120                                         -> registrationRequest u-1 false
        wait 240                                         -> requestListElements permission global
        unasked permission "registrationState":"Pending" -> state Pending
        answer permission "registrationState":"Pending"
        wait 600 -> requestListElements permission global; requestListElements permission global
        change permission "registrationState":"Expired"  -> state Expired
        wait 600
        register                                         -> registrationRequest u-1 false
        wait 30                                          -> requestListElements permission global
        answer permission "registrationState":"Expired"
        wait 60                                          -> registrationRequest u-1 false
        wait 120                                         -> requestListElements permission global
        answer permission "registrationState":"Expired"
        wait 3000
        change permission "registrationState":"Pending"  -> state Pending
        wait 30                                          -> requestListElements permission global
    )");
    row("a profile without a user and a picture", R"(
        register                                         -> state Success
        answer platformProfile "displayName":"A"
        change platformProfile "userId":"me"             -> gate profile; picture - - -; gate picture
        change platformProfile "userId":"me","handle":"h"
        change platformProfile "displayName":"B"         -> name B -
    )",
        registered);
    row("a profile that came unasked, of no known user", R"(
        unasked platformProfile "userId":""
        init
        turn  -> gate profile; picture - - -; gate picture; requestListElements permission global
    )");

    pictureRow("another picture, and none", R"(
        change platformProfile "avatarId":"p1","avatarMimeType":"image/bmp" -> requestUserAvatar me p1
        change platformProfile "displayName":"B"         -> name B old
        ask                                              -> requestUserAvatar me p1
        half p1 half
        stream p0 old-again
        wait 30                                          -> requestUserAvatar me p1
        stream p1 new                                    -> picture p1 image/bmp new; gate picture
        stream p1 twice
        bytes                                            -> has new
        set own                                          -> picture p1 image/bmp own; gate picture
        bytes                                            -> has own
        change platformProfile "avatarId":"p2"           -> requestUserAvatar me p2
        change platformProfile "avatarId":"p3"           -> requestUserAvatar me p3
        stream p2 overtaken
        change platformProfile "avatarId":""             -> picture - image/bmp -; gate picture
        stream p3 overtaken
        bytes                                            -> has
        wait 600
    )");
    pictureRow("an offer that the changed profile confirms", R"(
        offer mine                                       -> taken; requestListChange platformProfile %mine image/gif global
        wanted {"streamId":""}
        response {"status":"Success"}
        change platformProfile "avatarId":"%mine","avatarMimeType":"image/gif" -> picture %mine image/gif mine; gate picture
        response {"status":"Success"}
        wanted {"streamId":"%mine"}                      -> stream %mine bWluZQ== true
        offer next                                       -> taken; requestListChange platformProfile %next image/gif global
        change platformProfile "avatarId":"theirs"       -> picture theirs image/gif next; gate picture
        wait 600
    )");
    pictureRow("an offer of what there is, which the response confirms", R"(
        offer mine                                       -> taken; requestListChange platformProfile %mine image/gif global
        change platformProfile "avatarId":"%mine"        -> picture %mine image/png mine; gate picture
        offer mine                                       -> taken; requestListChange platformProfile %mine image/gif global
        response {"status":"Success"}                    -> picture %mine image/png mine; gate picture
        offer mine                                       -> taken; requestListChange platformProfile %mine image/gif global
        response []                                      -> picture %mine image/png mine; gate picture
        response {"status":"Success"}
    )");
    // What was refused may have been another change: the picture goes on its way.
    pictureRow("an offer that is given up", R"(
        offer mine                                       -> taken; requestListChange platformProfile %mine image/gif global
        offer other                                      -> Error:m_pendingAvatarSetRequest != 0; this request will be ignored since a request is already pending; refused
        wait 30                                          -> requestListElements platformProfile global; requestListChange platformProfile %mine image/gif global
        response {"status":"Failure"}                    -> Warning:a change of the own profile was refused; the own picture is given up
        wait 600
        bytes                                            -> has old
        wanted {"streamId":"%mine"}                      -> stream %mine bWluZQ== true
        change platformProfile "avatarId":"%mine"        -> requestUserAvatar me %mine
        stream %mine mine                                -> picture %mine image/png mine; gate picture
        offer next                                       -> taken; requestListChange platformProfile %next image/gif global
    )");
    pictureRow("offers that are refused", R"(
        offer                                            -> Error:Avatar size == 0; refused
        offer null 0                                     -> Error:Avatar size == 0; refused
        offer null 40000                                 -> Error:Avatar data is null; refused
        offer x*32769                                    -> Error:Avatar size 32769 exceeds 32768; refused
        offer x*32768                                    -> taken; requestListChange platformProfile %x*32768 image/gif global
    )");
    pictureRow("a picture from another device", R"(
        half p1 half
        change platformProfile "avatarId":"p1"           -> requestUserAvatar me p1
        half s7 half
        wanted {"streamId":"s7"}
        wanted {}
        stream - nothing
        stream s7 theirs                                 -> picture p1 image/png theirs; gate picture
        stream s7 twice
        stream p1 asked                                  -> picture p1 image/png asked; gate picture
    )");
}

ZEL_TEST(TstGlobalsManager)
#include "tst_globalsmanager.moc"
