// SPDX-License-Identifier: Apache-2.0
#include "ContainerGraph.h"

#include <common/TestMain.h>

class TstContainerGraphs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreeWithANaiveRecomputationWhoeverReads()
    {
        QRandomGenerator random = seededRandom();
        for (int i = 0; i < 150; ++i) {
            const quint32 seed = random.generate() >> 1;
            ContainerGraph graph(Choices(seed), i % 3 == 2);
            for (int step = 0; step < 60; ++step) {
                const QString wrong = graph.change();
                if (!wrong.isEmpty())
                    QFAIL(qPrintable(u"graph %1 (seed %2), change %3: %4"_s.arg(i).arg(seed).arg(step).arg(wrong)));
            }
        }
    }
};

ZEL_TEST(TstContainerGraphs)
#include "tst_containergraphs.moc"
