// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Thumbnails/BWThumbnailWorkers.h"

#include "Utils/BWLogging.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <pthread.h>
#include <thread>

using Clock = std::chrono::steady_clock;

struct BWThumbnailWorkers::State {
    struct Task { // that a worker is busy with
        BWThumbnailRequest request;
        Clock::time_point begun;
    };

    Callbacks callbacks;
    mutable std::mutex mutex;
    std::condition_variable wake;
    std::deque<BWThumbnailRequest> requests;
    std::list<Task> tasks;
    std::vector<BWThumbnailResult> results;
    std::deque<BWThumbnailResult> unstored;
    qsizetype unstoredBytes = 0; ///< of their images
    int storing = 0;
    bool notified = false; // of results, since they were last taken
    bool quit = false;

    bool hasWork() const { return quit || !requests.empty() || !unstored.empty(); }
    bool isUnderWay(const BWThumbnailRequest &request) const;
    void serveRequest(std::unique_lock<std::mutex> &lock, const Make &make);
    void storeResult(std::unique_lock<std::mutex> &lock);
};

namespace {

constexpr qsizetype mostUnstored = 32 << 20; // bytes
constexpr int mostHanging = 8;
constexpr std::chrono::milliseconds patienceAtEnd(500);

int processors()
{
    // With one worker only, a file that hangs would hold up all others.
    return static_cast<int>(std::max(2U, std::thread::hardware_concurrency()));
}

} // namespace

bool BWThumbnailWorkers::State::isUnderWay(const BWThumbnailRequest &request) const
{
    const auto isSame = [&request](const BWThumbnailRequest &other) {
        return other.file == request.file && other.size >= request.size;
    };
    return std::any_of(tasks.begin(), tasks.end(), [&](const Task &task) { return isSame(task.request); })
        || std::any_of(results.begin(), results.end(), [&](const auto &result) { return isSame(result.request); });
}

void BWThumbnailWorkers::State::serveRequest(std::unique_lock<std::mutex> &lock, const Make &make)
{
    const auto task = tasks.insert(tasks.end(), {std::move(requests.front()), Clock::now()});
    requests.pop_front();
    lock.unlock();
    BWThumbnailResult result = make(task->request);
    lock.lock();
    tasks.erase(task);
    if (quit)
        return;
    if (result.toBeStored) {
        unstored.push_back(result);
        unstoredBytes += result.made.thumbnail.image.sizeInBytes();
    }
    results.push_back(std::move(result));
    if (std::exchange(notified, true))
        return;
    lock.unlock();
    callbacks.resultsWaiting();
    lock.lock();
}

void BWThumbnailWorkers::State::storeResult(std::unique_lock<std::mutex> &lock)
{
    const BWThumbnailResult result = std::move(unstored.front());
    unstored.pop_front();
    unstoredBytes -= result.made.thumbnail.image.sizeInBytes();
    ++storing;
    lock.unlock();
    callbacks.store(result);
    lock.lock();
    --storing;
}

BWThumbnailWorkers::BWThumbnailWorkers(Callbacks callbacks, int threads, std::chrono::milliseconds patience)
    : m_state(std::make_shared<State>()),
      m_threads(threads > 0 ? threads : processors()),
      m_patience(patience),
      m_pool(m_threads + mostHanging, patienceAtEnd)
{
    m_state->callbacks = std::move(callbacks);
}

BWThumbnailWorkers::~BWThumbnailWorkers()
{
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->quit = true;
        m_state->requests.clear();
    }
    m_state->wake.notify_all();
    if (m_pool.finish())
        return;
    const std::lock_guard lock(m_state->mutex);
    qCWarning(bwModel, "Thumbnails: %d files do not answer and are left behind",
              static_cast<int>(m_state->tasks.size()) + m_state->storing);
}

void BWThumbnailWorkers::request(const QList<BWThumbnailRequest> &inOrder)
{
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->requests.clear();
        for (const BWThumbnailRequest &request : inOrder) {
            if (!m_state->isUnderWay(request))
                m_state->requests.push_back(request);
        }
        if (!m_state->requests.empty())
            addWorkers();
    }
    m_state->wake.notify_all();
}

std::vector<BWThumbnailResult> BWThumbnailWorkers::take()
{
    const std::lock_guard lock(m_state->mutex);
    m_state->notified = false;
    return std::exchange(m_state->results, {});
}

bool BWThumbnailWorkers::isIdle() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->requests.empty() && m_state->tasks.empty() && m_state->results.empty() && m_state->unstored.empty()
        && m_state->storing == 0;
}

/// As many as there should be besides those that hang. Called with the lock held.
void BWThumbnailWorkers::addWorkers()
{
    const auto longAgo = Clock::now() - m_patience;
    const auto hanging = std::count_if(m_state->tasks.begin(), m_state->tasks.end(),
                                       [longAgo](const State::Task &task) { return task.begun < longAgo; });
    const int wanted = m_threads + static_cast<int>(std::min<std::ptrdiff_t>(hanging, mostHanging));
    for (; m_workers < wanted; ++m_workers)
        m_pool.run([state = m_state] { run(state); });
}

void BWThumbnailWorkers::run(const std::shared_ptr<State> &state)
{
    pthread_setname_np(pthread_self(), "thumbnails");
    BWWorkerPool::lowerPriority();
    const Make make = state->callbacks.newMaker();
    std::unique_lock lock(state->mutex);
    for (;;) {
        state->wake.wait(lock, [&] { return state->hasWork(); });
        if (state->quit)
            break;
        // Showing comes before storing, unless too much memory is waiting to be stored.
        if (state->requests.empty() || state->unstoredBytes > mostUnstored)
            state->storeResult(lock);
        else
            state->serveRequest(lock, make);
    }
}
