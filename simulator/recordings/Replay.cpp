// SPDX-License-Identifier: Apache-2.0
#include <simulator/recordings/Replay.h>

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelcore {

using Kind = Recording::Entry::Kind;

Replay::Replay(Recording recording, Simulator::ReplayPace pace, int patience)
    : m_recording(std::move(recording))
    , m_pace(pace)
    , m_patience(patience)
{
    fill();
    m_clock.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        giveUp();
        advance();
    });
}

void Replay::fill()
{
    for (qsizetype i = 0; i < m_recording.entries.size(); ++i) {
        const Entry& entry = m_recording.entries.at(i);
        if (entry.kind == Kind::Away || entry.kind == Kind::Back)
            m_service.push_back({i});
        else if (entry.kind == Kind::Connected)
            laneFor(entry).then = entry.time;
        else if (entry.isRecord())
            laneFor(entry).steps.push_back({i});
    }
}

Replay::Lane& Replay::laneFor(const Entry& entry)
{
    const int application = entry.kind == Kind::Invoked ? 0 : entry.application;
    for (Lane& lane : m_lanes) {
        if (lane.application == application && lane.target == entry.target)
            return lane;
    }
    Lane& lane = m_lanes.emplace_back();
    lane.application = application;
    lane.target = entry.target;
    return lane;
}

Replay::Lane* Replay::laneOf(int client)
{
    const auto found = std::find_if(m_lanes.begin(), m_lanes.end(), [client](const Lane& lane) {
        return !lane.isTarget() && !lane.isOver && lane.client == client;
    });
    return found == m_lanes.end() ? nullptr : &*found;
}

QString Replay::nameOf(const Lane& lane) const
{
    return lane.isTarget() ? u"whoever asked "_s + lane.target : u"application %1"_s.arg(lane.application);
}

/// What a step was, and where to read it.
QString Replay::place(const Step& step) const
{
    const Entry& then = entry(step);
    return u"%1 (line %2)"_s.arg(describe(then.bytes, then.kind == Kind::Invoked),
                                 QString::number(Recording::lineOf(step.entry)));
}

// --- What applications do ---------------------------------------------------------------------------------------

void Replay::connected(int client)
{
    m_quietSince = m_clock.elapsed();
    Lane* taken = nullptr;
    for (Lane& lane : m_lanes) {
        // What targets were asked for counts from when the first application came.
        if (lane.client || (taken && !lane.isTarget()))
            continue;
        lane.client = client;
        lane.now = m_quietSince;
        taken = lane.isTarget() ? taken : &lane;
    }
    if (!taken)
        differ(u"another application came; then there were no more"_s);
    advance();
}

void Replay::disconnected(int client)
{
    Lane* const lane = laneOf(client);
    if (!lane)
        return;
    lane->isOver = true;
    const auto unmet =
        std::find_if(lane->steps.cbegin() + qptrdiff(lane->next), lane->steps.cend(), [&](const Step& step) {
            return entry(step).kind == Kind::Received && !step.met && !step.givenUp;
        });
    if (unmet != lane->steps.cend())
        differ(u"%1 has gone; then it still sent %2"_s.arg(nameOf(*lane), place(*unmet)));
    lane->next = lane->steps.size();
    advance();
}

void Replay::received(int client, const QByteArray& record)
{
    if (Lane* const lane = laneOf(client))
        take(*lane, record);
}

void Replay::invoked(const QString& target, const QByteArray& record)
{
    const auto found =
        std::find_if(m_lanes.begin(), m_lanes.end(), [&](const Lane& lane) { return lane.target == target; });
    if (found != m_lanes.end())
        take(*found, record);
    else
        differ(u"%1 was asked for %2; then it was asked for nothing"_s.arg(target, describe(record, true)));
}

void Replay::take(Lane& lane, const QByteArray& record)
{
    m_quietSince = m_clock.elapsed();
    if (!takeEqual(lane, record) && !takeSimilar(lane, record))
        differ(u"%1 also sent %2, which it did not then"_s.arg(nameOf(lane), describe(record, lane.isTarget())));
    advance();
}

/// The first step that is exactly this, whether it is its turn or not.
bool Replay::takeEqual(Lane& lane, const QByteArray& record)
{
    for (Step& step : lane.steps) {
        const Entry& then = entry(step);
        if (then.kind == Kind::Sent || step.met)
            continue;
        const Comparison comparison = compared(lane, then, record);
        if (!comparison.isEqual())
            continue;
        const auto later = std::find_if(lane.steps.cbegin(), lane.steps.cend(),
                                        [&](const Step& other) { return other.entry > step.entry && other.met; });
        if (step.givenUp)
            differ(u"%1 sent %2 later than then"_s.arg(nameOf(lane), place(step)));
        else if (later != lane.steps.cend())
            differ(u"%1 sent %2 after %3; then it came before it"_s.arg(nameOf(lane), place(step), place(*later)));
        meet(lane, step, comparison);
        return true;
    }
    return false;
}

/// The first of its type among the steps whose turn it is: what has been sent before the next answer.
bool Replay::takeSimilar(Lane& lane, const QByteArray& record)
{
    bool isAwaited = false;
    for (Step& step : lane.steps) {
        const Entry& then = entry(step);
        if (isAwaited && then.kind == Kind::Sent)
            break;
        if (then.kind == Kind::Sent || step.met || step.givenUp)
            continue;
        isAwaited = true;
        const Comparison comparison = compared(lane, then, record);
        if (!comparison.sameType)
            continue;
        differ(u"%1 sent another %2: %3"_s.arg(nameOf(lane), place(step), comparison.differences.join("; "_L1)));
        meet(lane, step, comparison);
        return true;
    }
    return false;
}

/// In an anonymous recording a text may be another one now, but not whom the application names that it was told of.
Comparison Replay::compared(const Lane& lane, const Entry& then, const QByteArray& record) const
{
    Comparison comparison = Comparison::of(then.bytes, record, lane.isTarget(), m_recording.anonymous);
    for (const Comparison::Pair& pair : std::as_const(comparison.pairs)) {
        const QString known = m_substitutes.value(pair.then, m_named.contains(pair.then) ? pair.then : pair.now);
        if (pair.meaning == Meaning::Id && pair.now != known)
            comparison.differences.append(u"\"%1\" was named, now \"%2\""_s.arg(known, pair.now));
    }
    return comparison;
}

void Replay::meet(Lane& lane, Step& step, const Comparison& comparison)
{
    step.met = true;
    for (const Comparison::Pair& pair : comparison.pairs) {
        if (pair.meaning == Meaning::Cookie)
            lane.cookies.insert(pair.then, pair.now);
        else if (pair.meaning == Meaning::Stream)
            lane.streams.insert(pair.then, pair.now);
        if (pair.meaning != Meaning::Cookie && m_recording.anonymous)
            m_substitutes.insert(pair.then, pair.now);
    }
}

/// A record for an application with the names in it that the application uses this time.
QByteArray Replay::bound(const Lane& lane, const QByteArray& record)
{
    const std::optional<Content> content = contentOf(record, false);
    if (!content)
        return record;
    const Content now = mapped(*content, [&](const TextPlace& place, const QString& text) {
        const Meaning meaning = meaningOf(place, text);
        if (meaning == Meaning::Id && m_recording.anonymous)
            m_named.insert(text);
        if (meaning == Meaning::Cookie)
            return lane.cookies.value(text, text);
        if (meaning == Meaning::Stream && lane.streams.contains(text))
            return lane.streams.value(text);
        return meaning == Meaning::Protocol ? text : m_substitutes.value(text, text);
    });
    return now.body == content->body ? record : withContent(record, false, now);
}

// --- What the service does --------------------------------------------------------------------------------------

/// Whoever is told may do anything here, so that this may be called while it runs.
void Replay::advance()
{
    m_again = true;
    if (std::exchange(m_advancing, true))
        return;
    while (std::exchange(m_again, false) && !m_ended) {
        for (Lane& lane : m_lanes)
            m_again = advanceLane(lane) || m_again;
        m_again = advanceService() || m_again;
    }
    m_advancing = false;
    if (m_ended)
        return;
    schedule();
    if (isFinished() && !std::exchange(m_told, true))
        Q_EMIT finished();
}

/// What one application hears may be of what another did: whatever had been sent before must have come.
bool Replay::isCaused(const Step& step) const
{
    return std::none_of(m_lanes.cbegin(), m_lanes.cend(), [&](const Lane& lane) {
        return !lane.isTarget() && waits(lane) && lane.steps.at(lane.next).entry < step.entry;
    });
}

bool Replay::advanceLane(Lane& lane)
{
    if (m_ended || !lane.isActive())
        return false;
    const Step& step = lane.steps.at(lane.next);
    const Entry& then = entry(step);
    const qint64 now = m_clock.elapsed();
    const bool isBeyondService = m_nextOfService < m_service.size() && m_service.at(m_nextOfService).entry < step.entry;
    const bool isReady = then.kind == Kind::Sent ? isCaused(step) && dueTime(then.time, lane.then, lane.now) <= now
                                                 : step.met || step.givenUp;
    if (isBeyondService || !isReady)
        return false;
    ++lane.next;
    lane.then = m_lastThen = then.time;
    lane.now = m_lastNow = now;
    if (then.kind == Kind::Sent) {
        m_quietSince = now;
        Q_EMIT due(*lane.client, bound(lane, then.bytes));
    }
    return true;
}

bool Replay::isServiceNext() const
{
    return m_nextOfService < m_service.size() &&
           std::all_of(m_lanes.cbegin(), m_lanes.cend(), [this](const Lane& lane) {
               return lane.isTarget() || lane.next == lane.steps.size() ||
                      lane.steps.at(lane.next).entry > m_service.at(m_nextOfService).entry;
           });
}

/// It goes away when all that was before has been.
bool Replay::advanceService()
{
    if (m_ended || !isServiceNext())
        return false;
    const Entry& then = entry(m_service.at(m_nextOfService));
    if (dueTime(then.time, m_lastThen, m_lastNow) > m_clock.elapsed())
        return false;
    ++m_nextOfService;
    m_lastThen = then.time;
    m_lastNow = m_clock.elapsed();
    if (then.kind == Kind::Away)
        Q_EMIT goAwayDue();
    else
        Q_EMIT comeBackDue();
    return true;
}

qint64 Replay::dueTime(qint64 then, qint64 laneThen, qint64 laneNow) const
{
    return m_pace == Simulator::ReplayPace::AtOnce ? laneNow : laneNow + then - laneThen;
}

/// Sets the timer for what is due next, or for when there is nothing left to wait for.
void Replay::schedule()
{
    constexpr qint64 never = std::numeric_limits<qint64>::max();
    qint64 next = never;
    for (const Lane& lane : m_lanes) {
        if (lane.isActive() && entry(lane.steps.at(lane.next)).kind == Kind::Sent && isCaused(lane.steps.at(lane.next)))
            next = std::min(next, dueTime(entry(lane.steps.at(lane.next)).time, lane.then, lane.now));
        else if (waits(lane))
            next = std::min(next, lastChance(lane));
    }
    if (isServiceNext())
        next = std::min(next, dueTime(entry(m_service.at(m_nextOfService)).time, m_lastThen, m_lastNow));
    if (next == never)
        m_timer.stop();
    else
        m_timer.start(int(std::clamp<qint64>(next - m_clock.elapsed(), 0, std::numeric_limits<int>::max())));
}

/// Whether it is an application's turn.
bool Replay::waits(const Lane& lane) const
{
    return lane.isActive() && entry(lane.steps.at(lane.next)).kind != Kind::Sent && !lane.steps.at(lane.next).met;
}

/// When it need not be waited for any longer.
qint64 Replay::lastChance(const Lane& lane) const
{
    return std::max(dueTime(entry(lane.steps.at(lane.next)).time, lane.then, lane.now), m_quietSince) + m_patience;
}

/// What has not come by now will not: all that the first lane that waits had sent before it heard anything more.
void Replay::giveUp()
{
    const auto found = std::find_if(m_lanes.begin(), m_lanes.end(), [this](const Lane& lane) {
        return waits(lane) && lastChance(lane) <= m_clock.elapsed();
    });
    if (found == m_lanes.end())
        return;
    m_quietSince = m_clock.elapsed();
    for (Step& step : std::span(found->steps).subspan(found->next)) {
        if (entry(step).kind == Kind::Sent)
            break;
        step.givenUp = !step.met;
        if (step.givenUp)
            differ(u"%1 has not sent %2, as it did then"_s.arg(nameOf(*found), place(step)));
    }
}

void Replay::end()
{
    m_ended = true;
    m_timer.stop();
}

bool Replay::isFinished() const
{
    return m_nextOfService == m_service.size() && std::all_of(m_lanes.cbegin(), m_lanes.cend(), [](const Lane& lane) {
               return lane.next == lane.steps.size();
           });
}

QString Replay::awaits() const
{
    for (const Lane& lane : m_lanes) {
        if (lane.next == lane.steps.size())
            continue;
        if (!lane.client && !lane.isTarget())
            return u"%1 has not come"_s.arg(nameOf(lane));
        const Step& step = lane.steps.at(lane.next);
        const QString what = entry(step).kind == Kind::Sent ? u"%1 is to hear %2"_s : u"%1 has not sent %2"_s;
        return what.arg(nameOf(lane), place(step));
    }
    return m_nextOfService == m_service.size() ? QString() : u"the service is to go away or to return"_s;
}

void Replay::differ(const QString& sentence)
{
    m_differences.append(sentence);
    Q_EMIT differed(sentence);
}

} // namespace zelcore
