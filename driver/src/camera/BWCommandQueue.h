// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

/// Ordered commands for one worker thread. Any thread posts, the worker runs them; if it hangs, another thread may run
/// them in its place, and no command runs twice.
class BWCommandQueue {
public:
    using Command = std::function<void()>;

    void post(Command command);

    /// As post(), but replaces a waiting command with the same key, in its place in the queue: of many values for one
    /// control only the newest is worth sending.
    void postNewest(int key, Command command);

    /// Lets the worker finish: what is in the queue still runs, and waiting ends.
    void close();
    bool isClosed() const;

    /// Runs the commands that are waiting now, not those posted meanwhile. Worker thread.
    void runWaiting();

    /// Waits until there is a command or the queue is closed. Worker thread.
    void wait();
    /// The same, but no longer than `time`; false if it ran out.
    bool waitFor(std::chrono::nanoseconds time);

    bool isEmpty() const;

private:
    struct Entry {
        std::optional<int> key;
        Command command;
    };

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Entry> m_entries;
    bool m_closed = false;
};
