// SPDX-License-Identifier: Apache-2.0
#include "Trace.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QTime>

using namespace Qt::StringLiterals;

namespace {

constexpr int longestBody = 400;

/// What stands between {"TYPE": and the last brace.
QString bodyOf(const QString& type, const QByteArray& json)
{
    const QString text = QString::fromUtf8(json);
    const QString head = u"{\"%1\":"_s.arg(type);
    return text.startsWith(head) ? text.mid(head.size(), text.size() - head.size() - 1) : text;
}

QString shortened(QString body)
{
    static const QRegularExpression base64(u"\"([A-Za-z0-9+/]{12})[A-Za-z0-9+/]{60,}={0,2}\""_s);
    QRegularExpressionMatch match = base64.match(body);
    while (match.hasMatch()) {
        const QString instead = u"\"%1…\" (%2 characters)"_s.arg(match.captured(1)).arg(match.capturedLength() - 2);
        body.replace(match.capturedStart(), match.capturedLength(), instead);
        match = base64.match(body, match.capturedStart() + instead.size());
    }
    if (body.size() > longestBody)
        body = u"%1… (%2 characters)"_s.arg(body.left(longestBody)).arg(body.size());
    return body;
}

} // namespace

QString traceLine(bool fromApplication, int client, const QString& type, const QByteArray& json)
{
    const QString time = QTime::currentTime().toString(u"HH:mm:ss.zzz"_s);
    const QString arrow = fromApplication ? u"-->"_s : u"<--"_s;
    const QString what = type.isEmpty() ? u"(not a message)"_s : type;
    return u"%1 app %2 %3 %4 %5"_s.arg(time, QString::number(client), arrow, what, shortened(bodyOf(type, json)));
}
