// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/FakeClock.h>
#include <common/FakePipe.h>
#include <common/RecordingHandlers.h>
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <zel/JsonStream.h>
#include <zel/ListApiMultiplexer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtTest/QTest>

/// What a manager is made of, and the other end of its pipe. Stories happen on it; each manager has a stage of its own,
/// with steps of its own.
///
/// A story has a step a line: what happens, and behind an arrow all that is logged as wrong, told and sent then, to the
/// last word. %word stands for the word's hash, x*100 for so many letters.
///
///     change platformProfile "avatarId":"%new"   -> requestUserAvatar me %new
///     stream %new new                            -> picture %new new; gate picture
struct Stage
{
    const QSharedPointer<FakeClock> clock = FakeClock::install();
    QSharedPointer<FakePipe> pipe = QSharedPointer<FakePipe>::create();
    QSharedPointer<zel::ListApiMultiplexer> multiplexer = QSharedPointer<zel::ListApiMultiplexer>::create(pipe);
    QSharedPointer<zel::JsonStream> stream = QSharedPointer<zel::JsonStream>::create(pipe);
    EventLog log;
    RecordingGates gates;
    const SlogCapture slog{5};

    Stage() { gates.log = &log; }
    virtual ~Stage() { FakeClock::uninstall(); }
    Q_DISABLE_COPY_MOVE(Stage)

    static QByteArray hash(const QByteArray& data)
    {
        return QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
    }

    void play(QString story)
    {
        static const QRegularExpression letters(QStringLiteral("x\\*(\\d+)"));
        for (auto found = letters.match(story); found.hasMatch(); found = letters.match(story))
            story.replace(found.captured(), QString(found.captured(1).toInt(), u'x'));
        static const QRegularExpression hashed(QStringLiteral("%(\\w+)"));
        for (auto found = hashed.match(story); found.hasMatch(); found = hashed.match(story))
            story.replace(found.captured(), QString::fromLatin1(hash(found.captured(1).toUtf8())));
        const QStringList lines = story.split(u'\n').filter(QRegularExpression(QStringLiteral("\\S")));
        for (const QString& line : lines) {
            happen(line.section(QStringLiteral("->"), 0, 0).simplified());
            const QString told = heard();
            QVERIFY2(told == line.section(QStringLiteral("->"), 1).simplified(),
                     qPrintable(line.simplified().left(500) + QStringLiteral("\nheard: ") + told));
        }
    }

    QString heard()
    {
        static const QRegularExpression wrong(QStringLiteral("^[23]: "));
        const QStringList logged = slog.lines().filter(wrong).mid(m_logged);
        m_logged += logged.size();
        const QStringList told = log.take() + pipe->takeSentInWords();
        return (QStringList(logged).replaceInStrings(wrong, QString()) + told).join(QStringLiteral("; "));
    }

    void happen(const QString& step)
    {
        const QStringList words = step.split(u' ');
        const QString& what = words.first();
        if (what == QLatin1String("turn"))
            QCoreApplication::processEvents();
        else if (what == QLatin1String("wait"))
            clock->advance(words.value(1).toInt() * 1000);
        else if (what == QLatin1String("stream") || what == QLatin1String("half")) // of what is sent in two
            pipe->inject(
                "{'stream':{'id':'@','value':'@','last':@}}",
                {words.value(1).toUtf8(), words.value(2).toUtf8().toBase64(), what.size() == 4 ? "false" : "true"});
        else if (!happen(what, words.mid(1)))
            qFatal("no such step: %s", qPrintable(step));
    }

protected:
    /// The steps of one manager; false when this is none of them.
    virtual bool happen(const QString& what, const QStringList& words) = 0;

private:
    qsizetype m_logged = 0;
};
