// SPDX-License-Identifier: Apache-2.0
#include <common/SeededRandom.h>

#include <zel/detail/LiveListIndex.h>

#include <QStringList>
#include <QTest>

class TstLiveListIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void equalsASearchFromTheEndUnderRandomChanges()
    {
        QRandomGenerator random = seededRandom();
        zel::detail::LiveListIndex index;
        QStringList keys; // of the items, in order
        for (int round = 0; round < 20000; ++round) {
            // It grows, and shrinks to nearly nothing again, so that slots are given out anew time after time.
            const bool growing = round / 1000 % 2 == 0;
            const QString key = QString::number(random.bounded(200));
            const int at = int(keys.lastIndexOf(key));
            if (random.bounded(10) < (growing ? 7 : 2)) {
                index.append(key);
                keys.append(key);
            } else if (at >= 0 && random.bounded(4) == 0) {
                const QString renamed = QString::number(random.bounded(200));
                index.rename(key, renamed);
                keys[at] = renamed;
            } else if (at >= 0) {
                index.remove(key);
                keys.removeAt(at);
            }
            const QString asked = QString::number(random.bounded(200));
            QVERIFY2(index.indexOf(key) == keys.lastIndexOf(key) && index.indexOf(asked) == keys.lastIndexOf(asked),
                     qPrintable(QStringLiteral("round %1").arg(round)));
        }
        index.clear();
        QCOMPARE(index.indexOf(keys.value(0)), -1);
    }
};

QTEST_GUILESS_MAIN(TstLiveListIndex)
#include "tst_livelistindex.moc"
