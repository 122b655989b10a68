#include "Utils/BWPatientThread.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

struct BWPatientThread::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> work; // the first one is under way
    bool started = false;
    bool end = false;
};

BWPatientThread::BWPatientThread(std::chrono::milliseconds patience)
    : m_patience(patience), m_state(std::make_shared<State>())
{
}

BWPatientThread::~BWPatientThread()
{
    std::unique_lock lock(m_state->mutex);
    m_state->end = true;
    m_state->changed.notify_all();
    if (!m_state->changed.wait_for(lock, m_patience, [this] { return m_state->work.empty(); }))
        m_state->work.resize(1);
}

void BWPatientThread::run(std::function<void()> work)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->work.push_back(std::move(work));
    m_state->changed.notify_all();
    if (!std::exchange(m_state->started, true))
        std::thread([state = m_state] { loop(state); }).detach();
}

void BWPatientThread::loop(const std::shared_ptr<State> &state)
{
    std::unique_lock lock(state->mutex);
    for (;;) {
        state->changed.wait(lock, [&state] { return state->end || !state->work.empty(); });
        if (state->work.empty())
            return;
        {
            const std::function<void()> work = std::move(state->work.front());
            lock.unlock();
            work();
            // What it holds is let go before its end is told.
        }
        lock.lock();
        state->work.pop_front();
        state->changed.notify_all();
    }
}
