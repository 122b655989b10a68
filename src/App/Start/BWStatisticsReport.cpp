// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWStatisticsReport.h"

#include "AppDelegate.h"

#include <algorithm>
#include <ctime>
#include <QEvent>
#include <QFile>
#include <QMetaEnum>
#include <QTextStream>
#include <QThread>
#include <QTimer>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr double longTime = 8; // milliseconds: half a frame of a usual screen

/// The thread's processor time. An event that waits, for a disk or a processor, takes longer than it computes.
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
    // An event that runs a loop of its own, for a menu say, lets others through until that loop ends.
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

bool BWStatisticsReport::isWanted()
{
    return qEnvironmentVariableIsSet("BW_STATISTICS");
}

void BWStatisticsReport::print(const AppDelegate &delegate)
{
    const auto *application = qobject_cast<BWTimedApplication *>(QCoreApplication::instance());
    if (!isWanted() || !application)
        return;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto milliseconds = [](const timeval &time) { return time.tv_sec * 1e3 + time.tv_usec / 1e3; };
    const auto now = std::chrono::steady_clock::now();
    const BWLiveViewStatistics counts = delegate.renderer().statistics();
    QTextStream out(stderr);
    out << "statistics: received=" << counts.received << " decoded=" << counts.decoded << " shown=" << counts.shown
        << " bad=" << counts.bad << " dropped=" << counts.dropped
        << " cpu_ms=" << milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime)
        << " first_frame_ms=" << delegate.firstFrameMilliseconds()
        << " gui_longest_ms=" << application->longestMilliseconds();
    if (const auto latencies = delegate.renderer().latencies())
        out << " latency_ms=" << latencies->median.count() / 1e3
            << " latency_p99_ms=" << latencies->percentile99.count() / 1e3;
    out << " time_ms="
        << QString::number(std::chrono::duration<double, std::milli>(now.time_since_epoch()).count(), 'f', 1) << '\n';
}

void BWStatisticsReport::printRegularly(AppDelegate &delegate)
{
    const int seconds = qEnvironmentVariableIntValue("BW_STATISTICS_EVERY");
    if (!isWanted() || seconds <= 0)
        return;
    auto *timer = new QTimer(&delegate);
    timer->callOnTimeout([&delegate] { print(delegate); });
    timer->start(std::chrono::seconds(seconds));
}

double BWStatisticsReport::millisecondsSinceStart()
{
    // Field 22 of proc(5)'s stat: start time after boot in clock ticks; the second field may contain blanks.
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    constexpr int startTime = 22 - 3;
    if (fields.size() <= startTime)
        return -1;
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    const double started = fields[startTime].toDouble() / static_cast<double>(sysconf(_SC_CLK_TCK));
    return (static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9 - started) * 1e3;
}
