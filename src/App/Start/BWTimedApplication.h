#pragma once

#include <chrono>
#include <QApplication>

/// An application that takes the time of every event it delivers on the GUI thread, for the statistics. What takes long
/// is told at once, with the time of the system's monotonic clock at its end.
class BWTimedApplication : public QApplication {
    Q_OBJECT

public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override;

    /// For so many milliseconds at most no other event was delivered, loops within events apart.
    double longestMilliseconds() const { return m_longest; }

private:
    using Clock = std::chrono::steady_clock;
    struct Delivery {
        int event;
        const QMetaObject *receiver; // it and the event may not be there any more afterwards
        Clock::time_point begun;
        std::chrono::nanoseconds computedBefore; // by the thread
    };
    void ended(const Delivery &delivery);

    int m_level = 0; // of the event loop whose event is being delivered
    Clock::time_point m_lastEnd;
    double m_longest = 0;
};
