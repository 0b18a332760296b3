// SPDX-License-Identifier: Apache-2.0
// Any file as a recording: it is refused with a sentence that says where and why, or else it is what it is when it is
// written again, loses in being made anonymous nothing that a replay needs, and who does just what was recorded is told
// of no difference.
#include "MemoryFile.h"

#include <simulator/recordings/Anonymiser.h>
#include <simulator/recordings/Recording.h>
#include <simulator/recordings/Replay.h>

#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cstdint>

using namespace Qt::StringLiterals;

using zelcore::Recording;
using zelcore::Replay;

namespace {

using Entry = Recording::Entry;
using Kind = Entry::Kind;

bool isEqual(const Entry& one, const Entry& other)
{
    return one.kind == other.kind && one.time == other.time && one.application == other.application &&
           one.uuid == other.uuid && one.target == other.target && one.bytes == other.bytes;
}

void requireReadable(const Recording& recording)
{
    QByteArray text = recording.header();
    for (const Entry& entry : recording.entries)
        text += entry.line();
    const MemoryFile file(text);
    QString problem;
    const std::optional<Recording> again = Recording::load(file.path(), &problem);
    requireNone(problem);
    require(again->started == recording.started && again->anonymous == recording.anonymous, "its header is the same");
    require(std::equal(again->entries.begin(), again->entries.end(), recording.entries.begin(), recording.entries.end(),
                       isEqual),
            "it is what was written");
}

/// Applications have a part each, so one that comes back under its number has none.
bool areAllNew(const Recording& recording)
{
    QList<int> known;
    for (const Entry& entry : recording.entries) {
        if (entry.kind == Kind::Connected && known.contains(entry.application))
            return false;
        if (entry.kind == Kind::Connected)
            known.append(entry.application);
    }
    return !known.isEmpty();
}

void playAsRecorded(const Recording& recording)
{
    Replay replay(recording, zelcore::Simulator::ReplayPace::AtOnce, 1000);
    for (const Entry& entry : recording.entries) {
        if (entry.kind == Kind::Connected)
            replay.connected(entry.application);
        else if (entry.kind == Kind::Disconnected)
            replay.disconnected(entry.application);
        else if (entry.kind == Kind::Received)
            replay.received(entry.application, entry.bytes);
        else if (entry.kind == Kind::Invoked)
            replay.invoked(entry.target, entry.bytes);
    }
    if (!areAllNew(recording))
        return;
    requireNone(replay.differences().join(u'\n'));
    require(replay.isFinished(), qPrintable(replay.awaits()));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    beginQuietly();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const MemoryFile file(QByteArrayView(data, static_cast<qsizetype>(size)));
    QString problem;
    const std::optional<Recording> recording = Recording::load(file.path(), &problem);
    require(recording.has_value() == problem.isEmpty(), "what cannot be read has a problem");
    if (!recording) {
        static const QRegularExpression place(u"\\A: line [0-9]+: "_s);
        require(problem.startsWith(file.path()) && place.match(problem.mid(file.path().size())).hasMatch(),
                "the sentence names the file and where in it");
        return 0;
    }
    requireReadable(*recording);
    const Recording anonymous = zelcore::Anonymiser().anonymised(*recording);
    require(anonymous.anonymous && anonymous.entries.size() == recording->entries.size(), "nothing is left out");
    for (qsizetype i = 0; i < anonymous.entries.size(); ++i) {
        const bool isInvocation = anonymous.entries.at(i).kind == Kind::Invoked;
        require(!zelcore::contentOf(anonymous.entries.at(i).bytes, isInvocation) ||
                    zelcore::contentOf(recording->entries.at(i).bytes, isInvocation),
                "what was not in the form is not");
    }
    requireReadable(anonymous);
    playAsRecorded(*recording);
    playAsRecorded(anonymous);
    return 0;
}
