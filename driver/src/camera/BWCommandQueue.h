#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

/// Ordered commands for one worker thread. Any thread posts, the worker runs; where that hangs another may stand in for
/// it, and then no command runs twice.
class BWCommandQueue {
public:
    using Command = std::function<void()>;

    void post(Command command);

    /// As post(), but if a command with the same key is still waiting, it is replaced where it stands: of many values
    /// for one thing only the newest is worth the work.
    void postNewest(int key, Command command);

    /// The worker is to finish: what is in the queue still runs, and waiting ends.
    void close();
    bool isClosed() const;

    /// Runs the commands that are waiting now, not those that come meanwhile. Worker thread.
    void runWaiting();

    /// Waits until there is a command or the queue is closed. Worker thread.
    void wait();
    /// The same, but not for longer than `time`; false when the time was over first.
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
