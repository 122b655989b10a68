#include "BWACUDriver/DispatchAfterStrict.h"

#include <map>
#include <mutex>
#include <QObject>
#include <utility>

struct BWManualClock::Private {
    struct Entry {
        QPointer<QObject> queue;
        Callback callback;
    };

    mutable std::mutex mutex;
    std::chrono::nanoseconds now{0};
    std::multimap<std::chrono::nanoseconds, Entry> entries; // equal times keep the order of their calls

    /// Moves time to the next entry that is due by `end` and takes it; with none, moves time to `end`.
    bool takeNext(std::chrono::nanoseconds end, Entry &entry)
    {
        const std::lock_guard lock(mutex);
        const auto first = entries.begin();
        if (first == entries.end() || first->first > end) {
            now = end;
            return false;
        }
        now = std::max(now, first->first);
        entry = std::move(first->second);
        entries.erase(first);
        return true;
    }
};

BWManualClock::BWManualClock() : d(std::make_unique<Private>()) { }

BWManualClock::~BWManualClock() = default;

std::chrono::nanoseconds BWManualClock::now() const
{
    const std::lock_guard lock(d->mutex);
    return d->now;
}

void BWManualClock::callAfter(std::chrono::nanoseconds delay, QObject *queue, Callback callback)
{
    const std::lock_guard lock(d->mutex);
    d->entries.emplace(d->now + delay, Private::Entry{queue, std::move(callback)});
}

void BWManualClock::advance(std::chrono::nanoseconds time)
{
    const std::chrono::nanoseconds end = now() + time;
    Private::Entry entry;
    while (d->takeNext(end, entry)) {
        if (entry.queue)
            entry.callback();
        entry = {};
    }
}
