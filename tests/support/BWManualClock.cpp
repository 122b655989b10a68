// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"

#include <algorithm>
#include <QObject>
#include <utility>

std::chrono::nanoseconds BWManualClock::now() const
{
    const std::lock_guard lock(m_mutex);
    return m_now;
}

void BWManualClock::callAfter(std::chrono::nanoseconds delay, QObject *queue, Callback callback)
{
    const std::lock_guard lock(m_mutex);
    m_entries.emplace(m_now + delay, Entry{queue, std::move(callback)});
}

void BWManualClock::advance(std::chrono::nanoseconds time)
{
    const std::chrono::nanoseconds end = now() + time;
    while (const std::optional<Entry> entry = takeNext(end)) {
        if (entry->queue)
            entry->callback();
    }
}

/// Moves time to the next entry that is due by `end` and takes it; with none, moves time to `end`.
std::optional<BWManualClock::Entry> BWManualClock::takeNext(std::chrono::nanoseconds end)
{
    const std::lock_guard lock(m_mutex);
    const auto first = m_entries.begin();
    if (first == m_entries.end() || first->first > end) {
        m_now = end;
        return std::nullopt;
    }
    m_now = std::max(m_now, first->first);
    return std::move(m_entries.extract(first).mapped());
}
