// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "RawApplication.h"

#include <common/TestMain.h>

#include <zelcore/Simulator.h>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCryptographicHash>
#include <QtCore/QRegularExpression>
#include <QtTest/QSignalSpy>

#include <map>

using zelcore::Simulator;

/// Each case has a service of its own and one application, A, that has begun.
class ServiceTest : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void init()
    {
        begin();
        application('A').begin();
        application('A').synchronize(); // its first word has been read
        application('A').records.clear();
    }

protected:
    void begin()
    {
        m_applications.clear();
        m_simulator.reset();
        m_simulator = std::make_unique<Simulator>();
        QVERIFY(m_simulator->start());
        m_refused = std::make_unique<QSignalSpy>(m_simulator.get(), &Simulator::refused);
    }

    RawApplication& application(char name)
    {
        auto& application = m_applications[name];
        if (!application)
            application = std::make_unique<RawApplication>(m_simulator->root());
        return *application;
    }

    /// Plays a dialogue, a line each, up to the first that does not go as it says. A letter is an application, which
    /// comes when it is first named.
    ///
    ///     $ COMMAND => TEXT...  the service does this, and what it says, between ^ and $, has these texts in it
    ///     $! COMMAND => TEXT    it refuses to, and says why
    ///     A> TYPE JSON          A sends a message; "change" is one that changes the own profile, "register silent" (or
    ///                           loud) one that registers
    ///     A= RECORD             it sends just these bytes, \n for a line break
    ///     A< TYPE TEXT... -TEXT... the next message of this type to A has these texts in it and not those; behind what
    ///                           A sends this is "-> TYPE TEXT...; TYPE TEXT..."
    ///     A. TYPE...            that is all A hears but for messages of these types, in this order
    ///     @ TARGET ACTION DATA  somebody invokes this target, which takes it
    ///     ~                     nothing is done any more, however much is due later
    ///     ! NUMBER              so many messages have been refused by now, with one short line each
    ///
    /// x[N], data[N] and hash[N] stand for so many letters, a picture of so many bytes in base64 and its SHA-1.
    bool play(const char* dialogue)
    {
        for (const QString& line : QString::fromUtf8(dialogue).split(u'\n', Qt::SkipEmptyParts)) {
            if (!playLine(filledIn(line.trimmed()))) {
                qWarning("not so: %s", qPrintable(line.trimmed()));
                return false;
            }
        }
        return true;
    }

    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<QSignalSpy> m_refused;

private:
    static QByteArray picture(int size)
    {
        QByteArray data;
        for (quint32 x = quint32(size) * 2654435761U + 1; data.size() < size; x = x * 1664525U + 1013904223U)
            data.append(char(x >> 24));
        return data;
    }

    static QString filledIn(QString line)
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

    bool playLine(const QString& line)
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
        if (line.startsWith(u'~'))
            return QTest::qWaitFor([] { return !QAbstractEventDispatcher::instance()->processEvents({}); });
        if (line.startsWith(u'@'))
            return invoke(rest.section(u' ', 0, 0), rest.section(u' ', 1, 1), rest.section(u' ', 2));
        RawApplication& speaker = application(line.at(0).toLatin1());
        if (line.at(1) == u'.')
            return speaker.drain() == rest.split(u' ', Qt::SkipEmptyParts);
        if (line.at(1) == u'=')
            return speaker.send(QString(rest).replace("\\n"_L1, "\n"_L1).toUtf8());
        QStringList answers = rest.section(u" -> "_s, line.at(1) == u'>' ? 1 : 0).split(u"; "_s, Qt::SkipEmptyParts);
        return (line.at(1) == u'<' || say(speaker, rest.section(u" -> "_s, 0, 0).toUtf8())) &&
               std::all_of(answers.cbegin(), answers.cend(),
                           [&](const QString& answer) { return hears(speaker, answer); });
    }

    bool invoke(const QString& target, const QString& action, const QString& data)
    {
        const QSignalSpy received(m_simulator.get(), &Simulator::invocationReceived);
        const QJsonObject record{{u"target"_s, target}, {u"action"_s, action}, {u"data"_s, data}};
        const QString path = m_simulator->root() + u"/services/invocation/"_s + target;
        const bool isSent = RawEnd(path).send(QJsonDocument(record).toJson(QJsonDocument::Compact));
        return isSent && QTest::qWaitFor([&] { return !received.isEmpty(); });
    }

    static bool say(RawApplication& speaker, const QByteArray& message)
    {
        const QByteArray type = message.left(message.indexOf(' '));
        const QByteArray words = message.mid(type.size() + 1);
        if (type == "register")
            return speaker.send("registrationRequest", R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":)" +
                                                           QByteArray(words == "silent" ? "true}" : "false}"));
        if (type == "change")
            return speaker.send("requestListChange",
                                R"({"type":"global","elements":[{"name":"platformProfile","value":)" + words + "}]}");
        return speaker.send(type, words);
    }

    static bool hears(RawApplication& listener, const QString& expected)
    {
        QStringList words = expected.split(u' ', Qt::SkipEmptyParts);
        const QJsonDocument message(listener.take(qPrintable(words.takeFirst())));
        const QString text = QString::fromUtf8(message.toJson(QJsonDocument::Compact));
        words.append(u"-never came"_s); // as take() says
        return std::all_of(words.cbegin(), words.cend(), [&](const QString& word) {
            return word.startsWith(u'-') ? !text.contains(word.mid(1)) : text.contains(word);
        });
    }

    bool playCommand(const QString& line, bool isDone)
    {
        QString reply;
        const QStringList texts = line.split(u" => "_s);
        const bool done = m_simulator->execute(texts.first(), &reply);
        const QString said = u'^' + reply.simplified() + u'$';
        const bool fits = done == isDone && std::all_of(texts.cbegin() + 1, texts.cend(),
                                                        [&](const QString& text) { return said.contains(text); });
        if (!fits)
            qWarning("it says: %s", qPrintable(reply));
        return fits;
    }

    std::map<char, std::unique_ptr<RawApplication>> m_applications;
};
