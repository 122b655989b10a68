// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/BWSimulatedCable.h"

#include <algorithm>
#include <utility>

BWSimulatedCable::BWSimulatedCable(Pacing pacing) : m_pacing(pacing) { }

template <typename Value>
void BWSimulatedCable::set(Value BWSimulatedCable::*member, Value value)
{
    const std::lock_guard lock(m_mutex);
    this->*member = value;
    m_changed.notify_all();
}

void BWSimulatedCable::pull()
{
    set(&BWSimulatedCable::m_gone, true);
}

void BWSimulatedCable::pressButton()
{
    const std::lock_guard lock(m_buttonMutex);
    if (m_button)
        m_button();
}

void BWSimulatedCable::stall()
{
    set(&BWSimulatedCable::m_stalled, true);
}

void BWSimulatedCable::tearNextFrames(int count)
{
    set(&BWSimulatedCable::m_tear, count);
}

void BWSimulatedCable::truncateNextFrames(int count)
{
    set(&BWSimulatedCable::m_truncate, count);
}

void BWSimulatedCable::loseNextFrames(int count)
{
    set(&BWSimulatedCable::m_lose, count);
}

void BWSimulatedCable::pushFrames(int count)
{
    const std::lock_guard lock(m_mutex);
    m_pushed += std::max(count, 0);
    m_changed.notify_all();
}

BWSimulatedCable::Claim BWSimulatedCable::claim(const void *device)
{
    const std::lock_guard lock(m_mutex);
    if (m_gone)
        return Claim::Gone;
    if (m_streamingDevice && m_streamingDevice != device)
        return Claim::InUse;
    m_streamingDevice = device;
    m_stalled = false;
    return Claim::Granted;
}

void BWSimulatedCable::release(const void *device)
{
    const std::lock_guard lock(m_mutex);
    if (m_streamingDevice == device)
        m_streamingDevice = nullptr;
}

void BWSimulatedCable::setButton(const void *device, std::function<void()> button)
{
    const std::lock_guard lock(m_buttonMutex);
    m_buttonDevice = device;
    m_button = std::move(button);
}

void BWSimulatedCable::clearButton(const void *device)
{
    const std::lock_guard lock(m_buttonMutex);
    if (m_buttonDevice == device)
        m_button = nullptr;
}

BWSimulatedCable::Turn BWSimulatedCable::waitForTurn(Time due, Time deadline)
{
    std::unique_lock lock(m_mutex);
    while (true) {
        if (m_gone)
            return Turn::Gone;
        const Time now = std::chrono::steady_clock::now();
        if (!m_stalled && m_pacing == Pacing::Manual && m_pushed > 0) {
            --m_pushed;
            return Turn::Frame;
        }
        const bool timed = !m_stalled && m_pacing == Pacing::RealTime;
        if (timed && now >= due)
            return Turn::Frame;
        // Checked after the frames, so that a flood of interruptions does not hold them back.
        if (std::exchange(m_interrupted, false) || now >= deadline)
            return Turn::Nothing;
        m_changed.wait_until(lock, timed ? std::min(due, deadline) : deadline);
    }
}

BWSimulatedCable::Fault BWSimulatedCable::takeFault()
{
    const std::lock_guard lock(m_mutex);
    const auto take = [](int &count) { return count > 0 && count-- > 0; };
    if (take(m_lose))
        return {.lost = true};
    return {.torn = take(m_tear), .truncated = take(m_truncate)};
}

void BWSimulatedCable::interrupt()
{
    set(&BWSimulatedCable::m_interrupted, true);
}

bool BWSimulatedCable::framesOutstanding() const
{
    const std::lock_guard lock(m_mutex);
    return m_pacing == Pacing::RealTime || m_pushed > 0;
}
