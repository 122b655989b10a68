#include "BWACUDriver/BWClock.h"

#include <algorithm>
#include <QObject>
#include <QThread>
#include <QTimer>
#include <utility>

namespace {

class BWSystemClock : public BWClock {
public:
    std::chrono::nanoseconds now() const override { return std::chrono::steady_clock::now().time_since_epoch(); }

    void callAfter(std::chrono::nanoseconds delay, QObject *queue, Callback callback) override
    {
        // Timers must be started on the queue's own thread; the time spent on the way there is part of the delay.
        const auto arm = [this, queue, due = now() + delay, callback = std::move(callback)] {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - now());
            QTimer::singleShot(std::max(left, std::chrono::milliseconds(0)), Qt::PreciseTimer, queue, callback);
        };
        if (queue->thread() == QThread::currentThread())
            arm();
        else
            QMetaObject::invokeMethod(queue, arm, Qt::QueuedConnection);
    }
};

} // namespace

BWClock &BWClock::system()
{
    static BWSystemClock clock;
    return clock;
}
