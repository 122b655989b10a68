// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>

/// A fixed number of threads for work that may hang as long as a disk, a network or a device does. One thread, unless
/// more are asked for, and then the work is done in order. The owner's thread only.
class BWWorkerPool {
public:
    /// The patience of an owner whose work uses the owner itself, and ends sooner or later.
    static constexpr auto untilDone = std::chrono::milliseconds::max();

    /// `patience` is how long the end waits for the work. With less than `untilDone` the work must keep alive what it
    /// uses, since it may outlive this object.
    explicit BWWorkerPool(int threads = 1, std::chrono::milliseconds patience = std::chrono::seconds(3));
    /// finish()
    ~BWWorkerPool();
    BWWorkerPool(const BWWorkerPool &) = delete;
    BWWorkerPool &operator=(const BWWorkerPool &) = delete;

    void setPatience(std::chrono::milliseconds patience) { m_patience = patience; }

    /// Returns at once. Threads start as they are needed.
    void run(std::function<void()> work);

    /// For work to call: its thread yields to the live image and a recording from now on.
    static void lowerPriority();

    /// Waits until all work is done; once the patience is over, drops work that has not begun and abandons threads that
    /// still have some. False if any was abandoned. No work may follow.
    bool finish();

private:
    struct State;

    const int m_mostThreads;
    std::chrono::milliseconds m_patience;
    const std::shared_ptr<State> m_state; // shared with the threads
};
