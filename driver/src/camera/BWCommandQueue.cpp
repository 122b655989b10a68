// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/BWCommandQueue.h"

#include <algorithm>
#include <utility>

void BWCommandQueue::post(Command command)
{
    const std::lock_guard lock(m_mutex);
    m_entries.push_back({std::nullopt, std::move(command)});
    m_changed.notify_one();
}

void BWCommandQueue::postNewest(int key, Command command)
{
    const std::lock_guard lock(m_mutex);
    const auto waiting =
        std::find_if(m_entries.begin(), m_entries.end(), [key](const Entry &entry) { return entry.key == key; });
    if (waiting != m_entries.end())
        waiting->command = std::move(command);
    else
        m_entries.push_back({key, std::move(command)});
    m_changed.notify_one();
}

void BWCommandQueue::close()
{
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    m_changed.notify_one();
}

bool BWCommandQueue::isClosed() const
{
    const std::lock_guard lock(m_mutex);
    return m_closed;
}

void BWCommandQueue::runWaiting()
{
    std::size_t count = 0;
    {
        const std::lock_guard lock(m_mutex);
        count = m_entries.size();
    }
    for (; count > 0; --count) {
        Command command;
        {
            const std::lock_guard lock(m_mutex);
            if (m_entries.empty())
                return;
            command = std::move(m_entries.front().command);
            m_entries.pop_front();
        }
        command();
    }
}

void BWCommandQueue::wait()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_entries.empty() || m_closed; });
}

bool BWCommandQueue::waitFor(std::chrono::nanoseconds time)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, time, [this] { return !m_entries.empty() || m_closed; });
}

bool BWCommandQueue::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return m_entries.empty();
}
