// SPDX-License-Identifier: GPL-3.0-or-later
#include "Utils/BWWorkerPool.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <sys/resource.h>
#include <thread>
#include <utility>
#include <vector>

struct BWWorkerPool::State {
    void loop();

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::thread> threads;
    std::deque<std::function<void()>> waiting;
    int open = 0; // pieces of work that wait or are being done
    bool end = false;
};

BWWorkerPool::BWWorkerPool(int threads, std::chrono::milliseconds patience)
    : m_mostThreads(threads), m_patience(patience), m_state(std::make_shared<State>())
{
}

BWWorkerPool::~BWWorkerPool()
{
    finish();
}

void BWWorkerPool::run(std::function<void()> work)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->waiting.push_back(std::move(work));
    const int threads = static_cast<int>(m_state->threads.size());
    if (++m_state->open > threads && threads < m_mostThreads)
        m_state->threads.emplace_back([state = m_state] { state->loop(); });
    m_state->changed.notify_all();
}

void BWWorkerPool::lowerPriority()
{
    ::setpriority(PRIO_PROCESS, 0, 10); // on Linux of the calling thread alone
}

bool BWWorkerPool::finish()
{
    std::unique_lock lock(m_state->mutex);
    if (std::exchange(m_state->end, true))
        return m_state->open == 0;
    m_state->changed.notify_all();
    const auto isDone = [this] { return m_state->open == 0; };
    bool done = true;
    if (m_patience == untilDone)
        m_state->changed.wait(lock, isDone);
    else
        done = m_state->changed.wait_for(lock, m_patience, isDone);
    std::deque<std::function<void()>> dropped; // let go of after the lock
    dropped.swap(m_state->waiting);
    std::vector<std::thread> threads;
    threads.swap(m_state->threads);
    lock.unlock();
    for (std::thread &thread : threads)
        done ? thread.join() : thread.detach();
    return done;
}

void BWWorkerPool::State::loop()
{
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return end || !waiting.empty(); });
        if (waiting.empty())
            return;
        {
            const std::function<void()> work = std::move(waiting.front());
            waiting.pop_front();
            lock.unlock();
            work();
            // What it holds is let go of before it counts as done.
        }
        lock.lock();
        --open;
        changed.notify_all();
    }
}
