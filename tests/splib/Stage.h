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

#include <functional>
#include <map>

using namespace Qt::StringLiterals;

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
    RecordingHandler gates; ///< the facade's side of the managers
    const SlogCapture slog{5};

    /// What may happen, by its name; what else is said of it goes to the function. Each manager has more of them.
    std::map<QString, std::function<void(const QStringList&)>> steps;

    Stage()
    {
        gates.log = &log;
        const auto streamed = [this](const QByteArray& isLast) {
            return [this, isLast](auto& words) {
                pipe->inject("{'stream':{'id':'@','value':'@','last':@}}",
                             {words[0].toUtf8(), words.value(1).toUtf8().toBase64(), isLast});
            };
        };
        steps[u"stream"_s] = streamed("true");
        steps[u"half"_s] = streamed("false"); // of what is sent in two
        steps[u"turn"_s] = [](auto&) { QCoreApplication::processEvents(); };
        steps[u"wait"_s] = [this](auto& words) { clock->advance(words[0].toInt() * 1000); };
        steps[u"when"_s] = [this](auto& words) { // this is told, all that stands behind colons happens in the slot
            const QStringList parts = words.join(u' ').split(u" : "_s);
            log.on(parts[0], [this, inside = parts.mid(1)] {
                for (const QString& step : inside)
                    happen(step);
            });
        };
    }
    ~Stage() { FakeClock::uninstall(); }
    Q_DISABLE_COPY_MOVE(Stage)

    static QByteArray hash(const QByteArray& data)
    {
        return QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
    }

    void play(QString story)
    {
        static const QRegularExpression letters(u"x\\*(\\d+)"_s);
        for (auto found = letters.match(story); found.hasMatch(); found = letters.match(story))
            story.replace(found.captured(), QString(found.captured(1).toInt(), u'x'));
        static const QRegularExpression hashed(u"%(\\w+)"_s);
        for (auto found = hashed.match(story); found.hasMatch(); found = hashed.match(story))
            story.replace(found.captured(), QString::fromLatin1(hash(found.captured(1).toUtf8())));
        const QStringList lines = story.split(u'\n').filter(QRegularExpression(u"\\S"_s));
        for (const QString& line : lines) {
            happen(line.section(u"->"_s, 0, 0).simplified());
            const QString told = heard();
            QVERIFY2(told == line.section(u"->"_s, 1).simplified(),
                     qPrintable(line.simplified().left(500) + u"\nheard: "_s + told));
        }
    }

    QString heard()
    {
        static const QRegularExpression wrong(u"^[23]: "_s);
        const QStringList logged = slog.lines().filter(wrong).mid(m_logged);
        m_logged += logged.size();
        const QStringList told = log.take() + pipe->takeSentInWords();
        return (QStringList(logged).replaceInStrings(wrong, QString()) + told).join(u"; "_s);
    }

    void happen(const QString& step)
    {
        const QStringList words = step.split(u' ');
        steps.at(words[0])(words.mid(1));
    }
    void note(bool isTaken) { log.add(isTaken ? u"taken"_s : u"refused"_s); }

private:
    qsizetype m_logged = 0;
};
