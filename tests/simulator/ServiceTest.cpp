// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

const QString uuid = u"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"_s;

QByteArray picture(int size)
{
    QByteArray data;
    for (quint32 x = quint32(size) * 2654435761U + 1; data.size() < size; x = x * 1664525U + 1013904223U)
        data.append(char(x >> 24));
    return data;
}

QString filledIn(QString line)
{
    static const QRegularExpression place(u"\\b(x|data|hash)\\[(\\d+)\\]"_s);
    for (auto match = place.match(line); match.hasMatch(); match = place.match(line)) {
        const int size = match.captured(2).toInt();
        QByteArray text(size, 'x');
        if (match.captured(1) == "data"_L1)
            text = picture(size).toBase64();
        else if (match.captured(1) == "hash"_L1)
            text = QCryptographicHash::hash(picture(size), QCryptographicHash::Sha1).toHex();
        line.replace(match.capturedStart(), match.capturedLength(), QString::fromLatin1(text));
    }
    return line;
}

} // namespace

void ServiceTest::init()
{
    m_simulator = std::make_unique<zelcore::Simulator>();
    QVERIFY(m_simulator->start());
    m_refused = std::make_unique<QSignalSpy>(m_simulator.get(), &zelcore::Simulator::refused);
    application('A').begin();
    application('A').synchronize(); // its first word has been read
    application('A').records.clear();
}

void ServiceTest::cleanup()
{
    m_applications.clear();
    m_refused.reset();
    m_simulator.reset();
}

RawApplication& ServiceTest::application(char name)
{
    auto& application = m_applications[name];
    if (!application)
        application = std::make_unique<RawApplication>(m_simulator->root());
    return *application;
}

bool ServiceTest::play(const char* dialogue)
{
    for (const QString& line : QString::fromUtf8(dialogue).split(u'\n', Qt::SkipEmptyParts)) {
        if (!playLine(filledIn(line.trimmed()))) {
            qWarning("not so: %s", qPrintable(line.trimmed()));
            return false;
        }
    }
    return true;
}

bool ServiceTest::playLine(const QString& line)
{
    const QString rest = line.section(u' ', 1);
    if (line.startsWith(u'$'))
        return playCommand(rest, !line.startsWith("$!"_L1));
    if (line.startsWith(u'!')) {
        application('A').synchronize();
        return m_refused->size() == rest.toInt() &&
               std::all_of(m_refused->cbegin(), m_refused->cend(), [](const QVariantList& refusal) {
                   return !refusal.first().toString().contains(u'\n') && refusal.first().toString().size() < 400;
               });
    }
    RawApplication& speaker = application(line.at(0).toLatin1());
    if (line.at(1) == u'.')
        return speaker.drain() == rest.split(u' ', Qt::SkipEmptyParts);
    if (line.at(1) == u'=')
        return speaker.sendRecord(QString(rest).replace("\\n"_L1, "\n"_L1).toUtf8());
    QStringList answers = rest.section(u" -> "_s, line.at(1) == u'>' ? 1 : 0).split(u"; "_s, Qt::SkipEmptyParts);
    return (line.at(1) == u'<' || say(speaker, rest.section(u" -> "_s, 0, 0))) &&
           std::all_of(answers.cbegin(), answers.cend(), [&](const QString& answer) { return hears(speaker, answer); });
}

bool ServiceTest::say(RawApplication& speaker, const QString& message)
{
    const QString type = message.section(u' ', 0, 0);
    const QString words = message.section(u' ', 1);
    const QJsonObject body = QJsonDocument::fromJson(words.toUtf8()).object();
    if (type == "register"_L1)
        return speaker.send(u"registrationRequest"_s, {{u"uuid"_s, uuid}, {u"silent"_s, words == "silent"_L1}});
    if (type != "change"_L1)
        return speaker.send(type, body);
    const QJsonObject element{{u"name"_s, u"platformProfile"_s}, {u"value"_s, body}};
    return speaker.send(u"requestListChange"_s, {{u"elements"_s, QJsonArray{element}}, {u"type"_s, u"global"_s}});
}

bool ServiceTest::hears(RawApplication& listener, const QString& expected)
{
    QStringList words = expected.split(u' ', Qt::SkipEmptyParts);
    const QJsonDocument message(listener.take(qPrintable(words.takeFirst())));
    const QString text = QString::fromUtf8(message.toJson(QJsonDocument::Compact));
    return std::all_of(words.cbegin(), words.cend(), [&](const QString& word) {
        return word.startsWith(u'-') ? !text.contains(word.mid(1)) : text.contains(word);
    });
}

bool ServiceTest::playCommand(const QString& line, bool isDone)
{
    QString reply;
    const QStringList texts = line.split(u" => "_s);
    const bool done = m_simulator->execute(texts.first(), &reply);
    const QString said = reply.simplified();
    const bool fits = done == isDone && std::all_of(texts.cbegin() + 1, texts.cend(),
                                                    [&](const QString& text) { return said.contains(text); });
    if (!fits)
        qWarning("it says: %s", qPrintable(reply));
    return fits;
}
