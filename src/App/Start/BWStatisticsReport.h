#pragma once

class AppDelegate;

/// One line of figures at the end of a run, for benchmarks and bug reports.
class BWStatisticsReport {
public:
    /// Whether the environment variable BW_STATISTICS is set.
    static bool isWished();

    /// Prints to the standard error output if that is wished, and the application is a BWTimedApplication.
    static void print(const AppDelegate &delegate);

    /// Milliseconds since the process was started, as the kernel counts (in steps of 10 ms).
    static double millisecondsSinceStart();
};
