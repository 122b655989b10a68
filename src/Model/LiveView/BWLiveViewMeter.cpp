// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWLiveViewMeter.h"

#include <algorithm>

namespace {

constexpr std::chrono::seconds lastSecond{1};

} // namespace

void BWLiveViewMeter::addReceived(Time now)
{
    m_received.add(now);
    m_delivers = true;
}

void BWLiveViewMeter::addShown(Time captured, Time now)
{
    m_shown.add(now);
    m_latencies.add(std::chrono::duration_cast<std::chrono::microseconds>(now - captured));
}

void BWLiveViewMeter::restart(Time now)
{
    m_dropped = 0;
    m_delivers = false;
    m_restarted = now;
}

std::size_t BWLiveViewMeter::countSince(const Ring<Time> &ring, Time begin)
{
    std::size_t count = 0;
    while (count < ring.count() && ring.newest(count) > begin)
        ++count;
    return count;
}

/// By the time between the frames: a plain count would flicker between 29 and 31.
double BWLiveViewMeter::rate(const Ring<Time> &ring, std::size_t count)
{
    if (count < 2)
        return static_cast<double>(count);
    const std::chrono::duration<double> span = ring.newest(0) - ring.newest(count - 1);
    return span.count() > 0 ? static_cast<double>(count - 1) / span.count() : static_cast<double>(count);
}

BWLiveViewFigures BWLiveViewMeter::figures(Time now) const
{
    if (!m_delivers)
        return {};
    const Time begin = std::max(now - lastSecond, m_restarted);
    const std::size_t shown = countSince(m_shown, begin);
    return {rate(m_received, countSince(m_received, begin)), rate(m_shown, shown), m_dropped,
            shown > 0 ? std::optional(latenciesOfNewest(shown).median) : std::nullopt};
}

std::optional<BWLiveViewMeter::Latencies> BWLiveViewMeter::latencies() const
{
    return m_shown.added > 0 ? std::optional(latenciesOfNewest(m_shown.count())) : std::nullopt;
}

BWLiveViewMeter::Latencies BWLiveViewMeter::latenciesOfNewest(std::size_t count) const
{
    std::array<std::chrono::microseconds, longest> sorted;
    for (std::size_t i = 0; i < count; ++i)
        sorted[i] = m_latencies.newest(i);
    std::sort(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(count));
    const auto rank = [&](std::size_t percent) { return sorted[(count * percent + 99) / 100 - 1]; };
    return {rank(50), rank(99)};
}
