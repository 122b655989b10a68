// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <QApplication>

class AppDelegate;

/// Times every event that it delivers on the GUI thread, for the statistics. An event that takes long is reported at once,
/// with the monotonic time at which it ended.
class BWTimedApplication : public QApplication {
    Q_OBJECT

public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override;

    /// The longest time for which an event kept all others waiting, nested event loops apart.
    double longestMilliseconds() const { return m_longest; }

private:
    using Clock = std::chrono::steady_clock;
    struct Delivery {
        int event;
        const QMetaObject *receiver; // receiver and event may be gone afterwards
        Clock::time_point begun;
        std::chrono::nanoseconds computedBefore; // by the thread
    };
    void ended(const Delivery &delivery);

    int m_level = 0; // of the event loop whose event is being delivered
    Clock::time_point m_lastEnd;
    double m_longest = 0;
};

/// A line of figures at the end of a run, for benchmarks and bug reports, and during a long one, too.
class BWStatisticsReport {
public:
    /// Whether the environment variable BW_STATISTICS is set.
    static bool isWanted();

    /// Prints to the standard error output if that is wanted and the application is a BWTimedApplication.
    static void print(const AppDelegate &delegate);

    /// Does that again and again as long as the delegate lives, if BW_STATISTICS_EVERY is a number of seconds. The latencies
    /// are those of the last pictures, half a minute of a usual camera.
    static void printRegularly(AppDelegate &delegate);

    /// Milliseconds since the process was started, as the kernel counts (in steps of 10 ms).
    static double millisecondsSinceStart();
};
