// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWSeries.h"

#include "Utils/BWLogging.h"

#include <algorithm>
#include <ctime>
#include <utility>

using namespace std::chrono_literals;

BWSeries::BWSeries(Sources sources, BWClock &clock) : m_sources(std::move(sources)), m_clock(clock) { }

BWSeries::~BWSeries()
{
    if (m_timer)
        m_timer->cancel();
}

BWSeries::Time BWSeries::timeSinceBoot()
{
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::seconds(time.tv_sec) + Time(time.tv_nsec);
}

void BWSeries::start(const BWSeriesPlan &plan)
{
    m_saved = m_missed = m_next = 0;
    begin(plan, -plan.delay);
}

void BWSeries::resume(const BWSeriesPlan &plan, qint64 saved, qint64 missed, Time sinceFirst)
{
    m_saved = saved;
    m_missed = missed;
    m_next = saved + missed;
    // The only clock that outlasts the computer may have been set back, which must not hold up the next picture.
    begin(plan, m_next > 0 ? std::max<Time>(sinceFirst, (m_next - 1) * Time(plan.interval)) : sinceFirst);
}

void BWSeries::begin(const BWSeriesPlan &plan, Time sinceFirst)
{
    m_plan = plan;
    m_first = m_sources.now() - sinceFirst;
    m_taken = m_saved;
    m_unsaved = 0;
    m_missedSince = 0;
    m_lastTaken = m_next > 0 ? timeOf(m_next - 1) : m_first;
    m_open = 0;
    m_obstacle = State::Running;
    m_hasBegun = true;
    m_isRunning = true;
    m_reason = Reason::Done;
    look();
}

void BWSeries::end(Reason reason)
{
    if (!std::exchange(m_isRunning, false))
        return;
    m_reason = reason;
    if (m_timer)
        m_timer->cancel();
    qCInfo(bwModel) << "Series: ended, reason" << static_cast<int>(reason) << "saved" << m_saved << "missed"
                    << m_missed;
    Q_EMIT changed();
    Q_EMIT ended();
}

BWSeries::State BWSeries::state() const
{
    if (!m_isRunning)
        return m_hasBegun ? State::Ended : State::Idle;
    return m_sources.now() < m_first ? State::Waiting : m_obstacle;
}

std::optional<qint64> BWSeries::lastSlot() const
{
    return m_plan.end == BWSeriesPlan::End::Duration ? std::optional(*m_plan.pictures() - 1) : std::nullopt;
}

/// Whether pictures are due beyond those taken and requested.
bool BWSeries::wantsMore() const
{
    if (m_plan.end == BWSeriesPlan::End::Number)
        return m_taken + (m_open != 0 ? 1 : 0) < m_plan.number;
    return m_next <= lastSlot().value_or(m_next);
}

bool BWSeries::isComplete() const
{
    const bool isOwed =
        m_open != 0 && (m_plan.end == BWSeriesPlan::End::Number || m_sources.now() - m_openSince < Time(patience));
    return !wantsMore() && !isOwed && m_unsaved == 0;
}

std::optional<BWSeries::Time> BWSeries::untilNext() const
{
    if (!m_isRunning || !wantsMore())
        return std::nullopt;
    return std::max<Time>(Time(0), timeOf(m_next) - m_sources.now());
}

/// Takes what is due, and looks again in time for the next second or picture.
void BWSeries::look()
{
    const Time passed = sinceFirst();
    if (passed >= Time(0)) {
        const qint64 slot = passed / Time(m_plan.interval);
        if (slot >= m_next)
            pass(slot);
    }
    if (isComplete()) {
        miss(m_open != 0 ? 1 : 0);
        end(Reason::Done);
        return;
    }
    schedule();
    Q_EMIT changed();
}

/// The time of that picture, and of those before it that have not been taken, has come.
void BWSeries::pass(qint64 slot)
{
    // A request goes with its camera, even with one that never answers.
    if (m_open != 0 && m_openCamera != m_sources.camera()) {
        m_open = 0;
        miss(1);
    }
    const bool wanted = wantsMore();
    const qint64 last = std::min(slot, lastSlot().value_or(slot));
    const Time tolerance = std::min<Time>(Time(m_plan.interval) / 2, 2s);
    const bool isOnTime = last == slot && m_sources.now() - timeOf(slot) <= tolerance;
    const qint64 due = last + 1 - std::exchange(m_next, last + 1);
    if (!wanted) {
        m_obstacle = m_open != 0 ? State::WaitingForCamera : State::Running; // for the last one
        return;
    }
    const bool takes = isOnTime && mayTake();
    const qint64 missed = takes ? due - 1 : due;
    miss(missed);
    if (!takes)
        return;
    m_openSince = m_sources.now();
    m_open = ++m_requests;
    m_sources.take(m_open);
}

void BWSeries::miss(qint64 pictures)
{
    m_missed += pictures;
    m_missedSince += pictures;
}

bool BWSeries::mayTake()
{
    m_openCamera = m_open == 0 ? m_sources.camera() : m_openCamera;
    if (!m_openCamera || m_open != 0)
        m_obstacle = State::WaitingForCamera;
    else if (m_unsaved >= mostUnsaved)
        m_obstacle = State::WaitingForDisk;
    else
        return true;
    return false;
}

void BWSeries::taken(unsigned request)
{
    if (request == m_open)
        m_open = 0;
    ++m_taken;
    ++m_unsaved;
    m_obstacle = State::Running;
    const Time now = m_sources.now();
    const Gap gap{std::exchange(m_missedSince, 0),
                  std::chrono::duration_cast<std::chrono::seconds>(now - std::exchange(m_lastTaken, now))};
    if (!m_isRunning)
        return;
    if (gap.missed > 0 && gap.length >= shortestGap) {
        qCInfo(bwModel) << "Series: goes on after" << gap.length.count() << "s, missed" << gap.missed;
        Q_EMIT gapEnded(gap);
    }
    Q_EMIT changed();
}

void BWSeries::notTaken(unsigned request)
{
    if (request != m_open || !m_isRunning)
        return;
    m_open = 0;
    miss(1);
    m_obstacle = State::WaitingForCamera;
    look();
}

void BWSeries::saved()
{
    ++m_saved;
    m_unsaved = std::max<qint64>(0, m_unsaved - 1);
    if (!m_isRunning)
        return;
    if (isComplete())
        end(Reason::Done);
    else
        Q_EMIT changed();
}

/// Whole seconds before the next picture, so that a countdown does not stumble.
void BWSeries::schedule()
{
    const Time left = untilNext().value_or(1s);
    const Time part = left % Time(1s);
    const Time wait = left > Time(0) && part == Time(0) ? Time(1s) : part;
    if (m_timer)
        m_timer->cancel();
    m_timer = DispatchAfterStrict::dispatchForQueue(
        this, [this] { look(); }, std::chrono::duration<double>(wait).count(), m_clock);
}
