// SPDX-License-Identifier: GPL-3.0-or-later
#include "Utils/BWMainQueue.h"

#include <deque>
#include <mutex>
#include <QCoreApplication>
#include <QEvent>
#include <utility>

namespace {

/// Work crosses threads in a queue with a mutex of ours; Qt only wakes the event loop. So the thread sanitizer, which
/// cannot look into Qt, sees who hands what to whom.
class Queue : public QObject {
public:
    void add(std::weak_ptr<void> owner, std::function<void()> work)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_work.push_back({std::move(owner), std::move(work)});
        }
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

protected:
    /// One piece for each event: an alert that one of them shows must not hold up the next.
    void customEvent(QEvent *) override
    {
        std::unique_lock lock(m_mutex);
        const Work first = std::move(m_work.front());
        m_work.pop_front();
        lock.unlock();
        if (!first.owner.expired())
            first.run();
    }

private:
    struct Work {
        std::weak_ptr<void> owner;
        std::function<void()> run;
    };

    std::mutex m_mutex;
    std::deque<Work> m_work;
};

/// Belongs to the thread on which the program starts, and is never destroyed, as other threads may outlive main().
Queue &queue = *new Queue;

} // namespace

void BWMainQueue::post(std::weak_ptr<void> owner, std::function<void()> work)
{
    queue.add(std::move(owner), std::move(work));
}
