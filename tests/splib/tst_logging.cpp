// SPDX-License-Identifier: Apache-2.0
#include <splib/log/Logging.h>

#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <QtCore/QElapsedTimer>

using namespace Qt::StringLiterals;
using namespace zelsplib::logging;

class TstLogging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesEachCodesLineAtItsSeverityAndFillsInNothingThatAnArgumentHolds()
    {
        const SlogCapture log;
        QVERIFY(Log<GENERAL_INFO>({}, "\xc3\xa4"));
        QVERIFY(Log<GENERAL_WARNING_INFO>({}, "%s"));
        QVERIFY(Log<GENERAL_ERROR>(u"p "_s, u"m"_s));
        QVERIFY(Log<ZELSP_AVATAR_RECEIVED>(u"%2 "_s, u"%2"_s, u"%1"_s, 4000000000U));
        QVERIFY(Log<ZELSP_PROFILE_BOX_IMG_ADDED_CALLBACK_FAILURE>({}, 1U, 2U, 3U));
        QCOMPARE(log.lines(),
                 (QStringList{u"5: \u00e4"_s, u"3: Warning:%s"_s, u"2: p Error:m"_s,
                              u"6: %2 received avatar: userId=[%2], streamId[%1], avatarSize[4000000000]"_s,
                              u"3: failed to add image into user profile box image list: livelistsize=[1], "
                              "imgCacheSize=[2], addedIndex=[3]"_s}));
    }

    void formatsNothingThatIsNotTaken()
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
    }
};

ZEL_TEST(TstLogging)
#include "tst_logging.moc"
