// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWAutoHide.h"

#include <utility>

BWAutoHide::BWAutoHide(std::chrono::milliseconds wait, Changed changed, BWClock &clock)
    : m_wait(wait), m_changed(std::move(changed)), m_clock(clock)
{
}

BWAutoHide::~BWAutoHide()
{
    if (m_timer)
        m_timer->cancel();
}

void BWAutoHide::setHeld(bool held)
{
    if (std::exchange(m_held, held) != held)
        show();
}

void BWAutoHide::show()
{
    m_quietSince = m_clock.now();
    if (!m_held && !m_timer)
        wait(m_wait);
    setShown(true);
}

void BWAutoHide::hide()
{
    m_held = false;
    if (const auto timer = std::exchange(m_timer, {}))
        timer->cancel();
    setShown(false);
}

/// A pointer that moves calls show() hundreds of times a second, so the timer is not set anew each time.
void BWAutoHide::wait(std::chrono::nanoseconds time)
{
    const auto end = [this] {
        m_timer.reset();
        const std::chrono::nanoseconds left = m_quietSince + m_wait - m_clock.now();
        if (m_held)
            return;
        if (left.count() > 0)
            wait(left);
        else
            setShown(false);
    };
    m_timer = DispatchAfterStrict::dispatchForQueue(this, end, std::chrono::duration<double>(time).count(), m_clock);
}

void BWAutoHide::setShown(bool shown)
{
    if (std::exchange(m_shown, shown) != shown)
        m_changed(shown);
}
