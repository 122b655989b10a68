// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWClock.h"

#include <algorithm>
#include <mutex>
#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <utility>

namespace {

using Time = std::chrono::nanoseconds;

Time currentTime()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

/// On the queue's own thread, as a timer must be.
void armTimer(QObject *queue, Time due, const BWClock::Callback &callback)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - currentTime());
    QTimer::singleShot(std::max(left, std::chrono::milliseconds(0)), Qt::PreciseTimer, queue, callback);
}

/// A callback on its way to the thread of its queue. It crosses under a mutex of ours, as the thread sanitizer cannot
/// look into Qt; the event only wakes that thread.
class CrossThreadCall : public QObject {
public:
    static void post(QObject *queue, Time due, BWClock::Callback callback)
    {
        auto *call = new CrossThreadCall;
        {
            const std::lock_guard lock(mutex);
            call->m_queue = queue;
            call->m_due = due;
            call->m_callback = std::move(callback);
        }
        call->moveToThread(queue->thread());
        QCoreApplication::postEvent(call, new QEvent(QEvent::User));
    }

protected:
    void customEvent(QEvent *) override
    {
        const std::lock_guard lock(mutex);
        if (m_queue)
            armTimer(m_queue, m_due, m_callback);
        deleteLater();
    }

private:
    static inline std::mutex mutex;

    QPointer<QObject> m_queue;
    Time m_due{0};
    BWClock::Callback m_callback;
};

class BWSystemClock : public BWClock {
public:
    Time now() const override { return currentTime(); }

    void callAfter(Time delay, QObject *queue, Callback callback) override
    {
        const Time due = now() + delay; // the time spent on the way to the queue's thread is part of the delay
        if (queue->thread() == QThread::currentThread())
            armTimer(queue, due, callback);
        else
            CrossThreadCall::post(queue, due, std::move(callback));
    }
};

} // namespace

BWClock &BWClock::system()
{
    static BWSystemClock clock;
    return clock;
}
