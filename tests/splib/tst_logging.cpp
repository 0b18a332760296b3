// SPDX-License-Identifier: Apache-2.0
#include <splib/log/Logging.h>

#include <common/SlogCapture.h>
#include <common/TestMain.h>

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

    void convertsNothingThatIsNotTaken()
    {
        struct Counted
        {
            operator QString() const { return QString::number(++*count); }
            int* count;
        };
        int count = 0;
        for (const int highest : {5, 6}) {
            const SlogCapture log(highest);
            QVERIFY(Log<ZELSP_PPS_SEND_JSONDATA>({}, Counted{&count}));
            QCOMPARE(log.lines().size(), count);
            QCOMPARE(count, highest - 5);
        }
    }
};

ZEL_TEST(TstLogging)
#include "tst_logging.moc"
