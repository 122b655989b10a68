#pragma once

class AppDelegate;

/// One line of figures at the end of a run, for benchmarks and bug reports.
class BWStatisticsReport {
public:
    /// Prints to the standard error output if the environment variable BW_STATISTICS is set.
    static void print(const AppDelegate &delegate);

    /// Milliseconds since the process was started, as the kernel counts (in steps of 10 ms).
    static double millisecondsSinceStart();
};
