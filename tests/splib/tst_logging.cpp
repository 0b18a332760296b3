// SPDX-License-Identifier: Apache-2.0
#include <splib/log/Logging.h>

#include <common/SlogCapture.h>

#include <QElapsedTimer>
#include <QTest>

using namespace zelsplib::logging;

static_assert(LogArgument<QString> && LogArgument<QStringView> && LogArgument<const char*> && LogArgument<unsigned>);
static_assert(!LogArgument<double> && !LogArgument<QStringList>);

using Writer = bool (*)();

class TstLogging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesEachCodesLine_data();
    void writesEachCodesLine();
    void fillsInNothingThatAnArgumentHolds();
    void formatsNothingThatIsNotTaken();
};

void TstLogging::writesEachCodesLine_data()
{
    QTest::addColumn<Writer>("write");
    QTest::addColumn<QString>("line");
    const auto row = [](const char* name, Writer write, const char* line) {
        QTest::newRow(name) << write << QString::fromUtf8(line);
    };
    row(
        "info", [] { return Log<GENERAL_INFO>({}, "m"); }, "5: m");
    row(
        "debug", [] { return Log<GENERAL_DEBUG_INFO>({}, "m"); }, "7: m");
    row(
        "warning", [] { return Log<GENERAL_WARNING_INFO>({}, "m"); }, "3: Warning:m");
    row(
        "error", [] { return Log<GENERAL_ERROR>({}, QStringLiteral("m")); }, "2: Error:m");
    row(
        "prefix", [] { return Log<GENERAL_ERROR>(QStringLiteral("p "), "m"); }, "2: p Error:m");
    row(
        "utf8", [] { return Log<GENERAL_INFO>({}, "\xc3\xa4"); }, "5: \xc3\xa4");
    row(
        "init", [] { return Log<ZELSP_SVC_INIT_FAILURE>({}, 2); }, "3: Failed to initialize ZELSPServices, errno:2");
    row(
        "avatar request", [] { return Log<ZELSP_AVATAR_REQUEST_SEND>({}, QStringLiteral("u"), QStringLiteral("s")); },
        "6: sending avatar request: userId=[u], streamId[s]");
    row(
        "avatar", [] { return Log<ZELSP_AVATAR_RECEIVED>({}, QStringLiteral("u"), QStringLiteral("s"), 4000000000U); },
        "6: received avatar: userId=[u], streamId[s], avatarSize[4000000000]");
    row(
        "contacts", [] { return Log<ZELSP_CONTACTS_NOT_READY>({}, "f"); },
        "6: platform contact list is not ready, called by function f");
    row(
        "image added", [] { return Log<ZELSP_PROFILE_BOX_IMG_ADDED_CALLBACK_FAILURE>({}, 1U, 2U, 3U); },
        "3: failed to add image into user profile box image list: livelistsize=[1], imgCacheSize=[2], addedIndex=[3]");
    row(
        "image asked",
        [] { return Log<ZELSP_PROFILE_BOX_REQ_IMG_CALLBACK>({}, QStringLiteral("1"), QStringLiteral("s")); },
        "6: zelcore request user profile box image, imageId:1, streamId:s");
    row(
        "image missing",
        [] { return Log<ZELSP_PROFILE_BOX_REQ_IMG_FAILURE>({}, QStringLiteral("1"), QStringLiteral("s")); },
        "3: Failed to find pending user profile box image, imageId:1, streamId:s");
    row(
        "icon",
        [] { return Log<ZELSP_PROFILE_BOX_IMG_DATA_RECEIVED>({}, QStringLiteral("1"), QStringLiteral("s"), 9U); },
        "6: received user_profile_box icon: imageId=[1], streamId[s], iconSize[9]");
    row(
        "open", [] { return Log<ZELSP_PPS_INIT_FAILURE>({}, "/p"); },
        "3: can't open pps file at: /p, shutting down library");
    row(
        "send", [] { return Log<ZELSP_PPS_SEND_JSONDATA>({}, QStringLiteral("{}")); },
        "6: sending json string to zelcore ==>: {}");
    row(
        "receive", [] { return Log<ZELSP_PPS_RECV_JSONDATA>({}, QStringView(u"{}")); },
        "6: received json string from zelcore <==: {}");
}

void TstLogging::writesEachCodesLine()
{
    QFETCH(Writer, write);
    QFETCH(QString, line);
    const SlogCapture log;
    QVERIFY(write());
    QCOMPARE(log.lines(), QStringList{line});
}

void TstLogging::fillsInNothingThatAnArgumentHolds()
{
    const SlogCapture log;
    Log<ZELSP_PPS_SEND_JSONDATA>({}, QStringLiteral("%1 %s"));
    Log<ZELSP_AVATAR_REQUEST_SEND>(QStringLiteral("%2 "), QStringLiteral("%2"), QStringLiteral("%1"));
    QCOMPARE(log.lines(6), (QStringList{QStringLiteral("sending json string to zelcore ==>: %1 %s"),
                                        QStringLiteral("%2 sending avatar request: userId=[%2], streamId[%1]")}));
}

void TstLogging::formatsNothingThatIsNotTaken()
{
    const SlogCapture log(5);
    const QString huge(20 * 1000 * 1000, u'x');
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!huge.toUtf8().isEmpty());
    const qint64 once = timer.nsecsElapsed();
    timer.restart();
    for (int i = 0; i < 100; ++i)
        QVERIFY(Log<ZELSP_PPS_SEND_JSONDATA>({}, huge));
    QVERIFY2(timer.nsecsElapsed() < once, "a hundred lines that nobody takes cost more than the text of one");
    QCOMPARE(log.lines(), QStringList());
    Log<GENERAL_INFO>({}, "taken");
    QCOMPARE(log.lines(), QStringList{QStringLiteral("5: taken")});
}

QTEST_GUILESS_MAIN(TstLogging)
#include "tst_logging.moc"
