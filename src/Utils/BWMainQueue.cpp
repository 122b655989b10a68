#include "Utils/BWMainQueue.h"

#include <deque>
#include <mutex>
#include <QCoreApplication>
#include <utility>

namespace {

struct Work {
    std::weak_ptr<void> owner;
    std::function<void()> run;
};

/// Work crosses threads under a mutex of its own rather than inside Qt's events, so that the thread sanitizer, which
/// cannot look into Qt, sees who hands what to whom.
class Waiting {
public:
    void add(Work work)
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
    }

    Work takeFirst()
    {
        const std::lock_guard lock(m_mutex);
        if (m_work.empty())
            return {};
        Work first = std::move(m_work.front());
        m_work.pop_front();
        return first;
    }

private:
    std::mutex m_mutex;
    std::deque<Work> m_work;
};

Waiting waiting;

} // namespace

void BWMainQueue::post(std::weak_ptr<void> owner, std::function<void()> work)
{
    waiting.add({std::move(owner), std::move(work)});
    // One at a time: an alert shown by one piece of work must not hold up the next.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [] {
            const Work first = waiting.takeFirst();
            if (!first.owner.expired())
                first.run();
        },
        Qt::QueuedConnection);
}
