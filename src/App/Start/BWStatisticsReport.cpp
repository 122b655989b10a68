#include "App/Start/BWStatisticsReport.h"

#include "App/Start/BWTimedApplication.h"
#include "AppDelegate.h"

#include <ctime>
#include <QFile>
#include <QTextStream>
#include <sys/resource.h>
#include <unistd.h>

bool BWStatisticsReport::isWished()
{
    return qEnvironmentVariableIsSet("BW_STATISTICS");
}

void BWStatisticsReport::print(const AppDelegate &delegate)
{
    const auto *application = qobject_cast<BWTimedApplication *>(QCoreApplication::instance());
    if (!isWished() || !application)
        return;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto milliseconds = [](const timeval &time) { return time.tv_sec * 1e3 + time.tv_usec / 1e3; };
    const BWLiveViewStatistics counts = delegate.liveViewStatistics();
    QTextStream(stderr) << "statistics: received=" << counts.received << " shown=" << counts.shown
                        << " bad=" << counts.bad << " dropped=" << counts.dropped
                        << " cpu_ms=" << milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime)
                        << " first_frame_ms=" << delegate.firstFrameMilliseconds()
                        << " gui_longest_ms=" << application->longestMilliseconds() << '\n';
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
