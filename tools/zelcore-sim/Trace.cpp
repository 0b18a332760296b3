// SPDX-License-Identifier: Apache-2.0
#include "Trace.h"

#include <common/WireText.h>

#include <QtCore/QDateTime>

using namespace Qt::StringLiterals;

QString traceLine(const zelcore::WireRecord& record)
{
    constexpr int longestBody = 400;
    const QString time = QDateTime::fromMSecsSinceEpoch(record.time).toString(u"HH:mm:ss.zzz"_s);
    const bool isRequest = record.direction == zelcore::WireRecord::Direction::FromApplication;
    const QString summary = zeltools::summaryOf(record, longestBody);
    const QString size = summary.endsWith(u'…') ? u" (%1 bytes)"_s.arg(record.bytes.size()) : QString();
    return u"%1 app %2 %3 %4 %5"_s.arg(time, QString::number(record.client), isRequest ? u"-->"_s : u"<--"_s,
                                       zeltools::typeOf(record), summary + size);
}
