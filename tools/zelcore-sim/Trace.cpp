// SPDX-License-Identifier: Apache-2.0
#include "Trace.h"

#include <QtCore/QDateTime>
#include <QtCore/QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

constexpr int longestBody = 400;

/// TYPE BODY, for a message {"TYPE":BODY}.
QString contentOf(const QByteArray& record)
{
    const QByteArray head = "dat:json:";
    const qsizetype start = record.indexOf('\n' + head) + 1 + head.size();
    const QString json = QString::fromUtf8(record.mid(start, record.indexOf('\n', start) - start));
    const qsizetype nameEnd = json.indexOf(u"\":"_s);
    const bool isMessage = start > head.size() && json.startsWith(u"{\""_s) && json.endsWith(u'}') && nameEnd > 0;
    return isMessage ? json.mid(2, nameEnd - 2) + u' ' + json.mid(nameEnd + 2).chopped(1)
                     : u"(not a message) "_s + QString::fromUtf8(record).simplified();
}

QString shortened(QString body)
{
    static const QRegularExpression base64(u"\"([A-Za-z0-9+/]{12})[A-Za-z0-9+/]{60,}={0,2}\""_s);
    QRegularExpressionMatch match = base64.match(body);
    while (match.hasMatch()) {
        const QString instead =
            u"\"%1…\" (%2 characters)"_s.arg(match.captured(1), QString::number(match.capturedLength() - 2));
        body.replace(match.capturedStart(), match.capturedLength(), instead);
        match = base64.match(body, match.capturedStart() + instead.size());
    }
    if (body.size() > longestBody)
        body = u"%1… (%2 characters)"_s.arg(body.left(longestBody), QString::number(body.size()));
    return body;
}

} // namespace

QString traceLine(const zelcore::WireRecord& record)
{
    const QString time = QDateTime::fromMSecsSinceEpoch(record.time).toString(u"HH:mm:ss.zzz"_s);
    const bool isRequest = record.direction == zelcore::WireRecord::Direction::FromApplication;
    return u"%1 app %2 %3 %4"_s.arg(time, QString::number(record.client), isRequest ? u"-->"_s : u"<--"_s,
                                    shortened(contentOf(record.bytes)));
}
