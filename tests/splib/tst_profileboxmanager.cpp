// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxManager.h>

#include "Stage.h"

using namespace zelsplib;

namespace {

/// Items and icons are "id=text" and "id=hash", or their ids alone.
struct BoxStage : Stage
{
    ProfileBoxManager<RecordingHandler> manager{multiplexer, stream, &gates};

    void send(const char* message, const QString& list, const QStringList& words)
    {
        const QString form =
            list == u"items" ? uR"({"itemId":"%1","text":"%2"})"_s : uR"({"imageId":"%1","imageHash":"%2"})"_s;
        QByteArrayList elements;
        for (const QString& word : words)
            elements.append(form.arg(word.section(u'=', 0, 0), word.section(u'=', 1)).toUtf8());
        pipe->inject("{'@':{'type':'profileBox@','elements':[@],'last':true}}",
                     {message, list == u"items" ? "Item" : "Image", elements.join(',')});
    }

    QString shown() const
    {
        QList<ProfileBoxItem> items;
        manager.getProfileBoxItems(items);
        QList<ProfileBoxImage> icons;
        manager.buildProfileBoxImageList(icons);
        QStringList texts;
        for (const ProfileBoxItem& item : items)
            texts.append(item.getItemId() + u'=' + item.getText());
        for (const ProfileBoxImage& icon : icons)
            texts.append(icon.getImageId() + u'=' + icon.getImageHash());
        return texts.join(u' ');
    }

    BoxStage()
    {
        manager.eventHandler().log = &log;
        const auto told = [this](const char* message) {
            return [this, message](auto& words) { send(message, words[0], words.mid(1)); };
        };
        steps[u"init"_s] = [this](auto&) { manager.init(); };
        steps[u"whole"_s] = [this, chunk = told("listChunk")](auto& words) {
            send("listAll", words[0], {});
            chunk(words);
        };
        steps[u"add"_s] = told("listAdd");
        steps[u"change"_s] = told("listChange");
        steps[u"remove"_s] = told("listRemove");
        steps[u"show"_s] = [this](auto&) { log.add(shown()); };
        steps[u"create"_s] = [this](auto& words) {
            const QByteArray data = words.value(1).toUtf8();
            note(manager.createProfileBoxImage(words[0].toInt(), Avatar::Png,
                                               data == "null" ? nullptr : data.constData(), unsigned(data.size())));
        };
        steps[u"item"_s] = [this](auto& words) { // a text, its line breaks, a cookie and an icon
            const QString breaks = QString(words[1]).replace(u'n', u'\n').replace(u'r', u'\r');
            note(manager.createProfileBoxItem(words[0] == u"-" ? u""_s : words[0] + breaks,
                                              boost::make_optional(words.size() > 3, words.value(3).toInt()),
                                              words.value(2)));
        };
        steps[u"drop"_s] = [this](auto& words) { manager.removeProfileBoxItem(words[0]); };
        steps[u"wanted"_s] = [this](auto& words) {
            pipe->inject("{'requestNewProfileBoxImage':{'streamId':'s','imageId':'@'}}", {words[0].toUtf8()});
        };
        steps[u"get"_s] = [this](auto& words) { manager.retrieveProfileBoxImage(words[0].toInt()); };
    }
};

const auto withBox = uR"(
    init
    turn                      -> requestListAll profileBoxImage; requestListAll profileBoxItem
    whole items i1=a
    whole icons 7=h7          -> gate box
)"_s;

} // namespace

class TstProfileBoxManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsItsStory_data();
    void tellsItsStory()
    {
        QFETCH(const QString, story);
        BoxStage stage;
        QCOMPARE(stage.manager.profileBoxState(), ProfileBoxState::Loading);
        stage.play(story);
        QCOMPARE(stage.manager.profileBoxState(), ProfileBoxState::Ready);
    }
};

void TstProfileBoxManager::tellsItsStory_data()
{
    QTest::addColumn<QString>("story");
    // @number stands for the stream that an icon is retrieved on, by the last byte of its number.
    const auto row = [](const char* name, const char* story, const QString& before = withBox) {
        QString text = before + QLatin1String(story);
        for (const int number : {0, 1, 200}) {
            const QByteArray stream = QByteArray("requestProfileBoxImage-") + static_cast<char>(number);
            text.replace(u"@%1 "_s.arg(number), QString::fromLatin1(Stage::hash(stream)) + u' ');
        }
        QTest::newRow(name) << text;
    };

    row("ready when both lists have come", R"(
        init
        turn                  -> requestListAll profileBoxImage; requestListAll profileBoxItem
        whole items
        whole icons           -> gate box
        whole icons 1         -> icon added 1 -
        whole items
    )",
        {});
    row("items that come and go", R"(
        drop i1               -> requestListRemove i1 profileBoxItem
        add items i2=b i1=a2  -> item added i2 b; item updated i1 a2
        change items i2=c i1=a2 -> item updated i2 c
        show                  -> i1=a2 i2=c 7=h7
        remove items i1 i9 i2 -> item removed i1 a2; item removed i2 c
        show                  -> 7=h7
    )");
    row("what a whole list changes", R"(
        whole items i3=c i1=changed i2 -> item added i3 c; item added i2 -; item updated i1 changed
        whole items i1=changed i3=c i2 -> item updated i1 changed; item updated i3 c
        whole items i4=d i2   -> item removed i1 changed; item removed i3 c; item added i4 d
        show                  -> i4=d i2= 7=h7
        whole items i4=d i2 i2=e -> item added i2 e
        whole items i4=d i2   -> item removed i2 e
        add icons 7=new       -> icon updated 7 -
        show                  -> i4=d i2= 7=new
        whole icons 7=new 8   -> icon added 8 -
        whole icons 8 7=new   -> icon updated 8 -; icon updated 7 -
    )");
    row("a slot that spins an event loop", R"(
        when item removed i1 a : show : remove items i2
        whole items i2=b i3=c -> item removed i1 a; i2=b i3=c 7=h7; item added i2 b; item added i3 c; item removed i2 b
    )");
    // The text is looked at before the cookie, its length before its lines.
    row("items that are refused", R"(
        item x*98 nr x*128 0  -> taken; createProfileBoxItem x*98\n\r x*128 0
        item - - x*129        -> Error:Failed to create profile box item: text is null or empty; refused
        item x*98 nnn         -> Error:Failed to create profile box item: text > 100 chars; refused
        item a nnn x*129      -> Error:Failed to create profile box item: text contains more than 2 new line chars; refused
        item a rnrn x*129     -> Error:Failed to create profile box item: text contains more than 2 new line chars; refused
        item x*98 nn x*129    -> Error:Failed to create profile box item: cookie > 128 chars; refused
    )");
    row("icons that are refused", R"(
        create -1 null        -> Error:Failed to register profile box icon: icon ID is invalid; refused
        create 0 null         -> Error:Failed to register profile box icon: null pointer found; refused
        create 0              -> Error:Failed to register profile box icon: icon size=0 is invalid; refused
        create 0 x*32769      -> Error:Failed to register profile box icon: icon size=32769 is invalid; refused
        create 7 a            -> Error:Failed to register a profile box icon with id=7; already registered; refused
        create 0 a            -> taken; createProfileBoxImage %a 0
        create 0 b            -> Error:Failed to register profile box icon ID=0: registration of icon with same ID already in progress; refused
        add icons 0           -> icon added 0 a
        create 0 b            -> Error:Failed to register a profile box icon with id=0; already registered; refused
        create 2147483647 x*32768 -> taken; createProfileBoxImage %x*32768 2147483647
    )");
    row("icons are listed with their data", R"(
        create 3 icon         -> taken; createProfileBoxImage %icon 3
        create 4 four         -> taken; createProfileBoxImage %four 4
        wanted 5              -> Failed to find pending user profile box image, imageId:5, streamId:s
        wanted 3              -> stream s aWNvbg== true
        add icons 3=h 5=      -> icon added 3 icon; icon added 5 -
        wanted 3              -> Failed to find pending user profile box image, imageId:3, streamId:s
        whole icons 4= 3=h    -> icon removed 7 -; icon removed 5 -; icon added 4 four
        remove icons 3        -> icon removed 3 icon
    )");
    // Whoever registers steadily has the older ones asked for again as well.
    row("icons whose bytes have not gone", R"(
        create 3 icon         -> taken; createProfileBoxImage %icon 3
        wait 18
        create 10 other       -> taken; createProfileBoxImage %other 10
        wait 12               -> createProfileBoxImage %icon 3
        wanted 3              -> stream s aWNvbg== true
        wanted 10             -> stream s b3RoZXI= true
        wait 600
        add icons 10          -> icon added 10 other
        whole icons 7=h7 10
        wait 30               -> createProfileBoxImage %icon 3
        add icons 3=h         -> icon added 3 icon
        wait 600
    )");
    row("icons are retrieved in request order", R"(
        get 1                 -> requestProfileBoxImage 71df9e51ef778ae76cb68ca4583a773d3ff62ec1 1
        get 257               -> requestProfileBoxImage @1 257
        get 200               -> requestProfileBoxImage @200 200
        stream other x
        half @200 cut
        wait 30               -> requestProfileBoxImage 71df9e51ef778ae76cb68ca4583a773d3ff62ec1 1; requestProfileBoxImage @1 257; requestProfileBoxImage @200 200
        stream @200 c         -> icon retrieved 200 image/jpeg c
        stream @1 a           -> icon retrieved 1 image/jpeg a
        stream @1 b           -> icon retrieved 257 image/jpeg b
        stream @1 d
        wait 600
    )");
    // The answer for 0 comes late, and twice; 768 is in no list; that for 512 is cut at first.
    row("icons of one stream are told apart", R"(
        whole icons 0=%a 256=%b 512=%c -> icon removed 7 -; icon added 0 -; icon added 256 -; icon added 512 -
        get 0                 -> requestProfileBoxImage @0 0
        get 256               -> requestProfileBoxImage @0 256
        get 512               -> requestProfileBoxImage @0 512
        get 768               -> requestProfileBoxImage @0 768
        get 0                 -> requestProfileBoxImage @0 0
        stream @0 b           -> icon retrieved 256 image/jpeg b
        stream @0 a           -> icon retrieved 0 image/jpeg a
        stream @0 a
        stream @0 d           -> icon retrieved 768 image/jpeg d
        stream @0 half        -> requestProfileBoxImage @0 512
        stream @0 c           -> icon retrieved 512 image/jpeg c
    )");
}

ZEL_TEST(TstProfileBoxManager)
#include "tst_profileboxmanager.moc"
