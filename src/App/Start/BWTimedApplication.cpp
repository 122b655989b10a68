#include "App/Start/BWTimedApplication.h"

#include <algorithm>
#include <ctime>
#include <QEvent>
#include <QMetaEnum>
#include <QTextStream>
#include <QThread>
#include <utility>

namespace {

constexpr double longTime = 8; // milliseconds: half a frame of a usual screen

/// What the thread has computed. An event takes longer than it computes when it waits, for a disk or for a processor.
std::chrono::nanoseconds computed()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

bool BWTimedApplication::notify(QObject *receiver, QEvent *event)
{
    if (QThread::currentThread() != thread())
        return QApplication::notify(receiver, event);
    const int level = thread()->loopLevel();
    if (level == m_level) // within an event that is measured
        return QApplication::notify(receiver, event);
    const int outer = std::exchange(m_level, level);
    const Delivery delivery{event->type(), receiver->metaObject(), Clock::now(), computed()};
    const bool result = QApplication::notify(receiver, event);
    m_level = outer;
    ended(delivery);
    return result;
}

void BWTimedApplication::ended(const Delivery &delivery)
{
    using Milliseconds = std::chrono::duration<double, std::milli>;
    const Clock::time_point now = Clock::now();
    // An event that runs a loop of its own, for a menu say, lets others be delivered until that ends.
    const double time = Milliseconds(now - std::max(delivery.begun, m_lastEnd)).count();
    m_lastEnd = now;
    m_longest = std::max(m_longest, time);
    if (time >= longTime)
        QTextStream(stderr) << "GUI thread: blocked_ms=" << time
                            << " computed_ms=" << Milliseconds(computed() - delivery.computedBefore).count()
                            << " ended_ms=" << QString::number(Milliseconds(now.time_since_epoch()).count(), 'f', 1)
                            << " event=" << QMetaEnum::fromType<QEvent::Type>().valueToKey(delivery.event) << " of "
                            << delivery.receiver->className() << '\n';
}
