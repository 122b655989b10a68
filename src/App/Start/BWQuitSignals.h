#pragma once

#include <functional>
#include <QSocketNotifier>

/// Hands the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) to the GUI thread, so that it ends as if the
/// user had quit. A second SIGINT ends it at once. What was ignored at the start, as after nohup, stays ignored.
///
/// One at a time; made and destroyed on the GUI thread.
class BWQuitSignals {
public:
    /// `end` is called for every signal, by the event loop.
    explicit BWQuitSignals(std::function<void()> end);
    /// The signals end the program at once again.
    ~BWQuitSignals();
    BWQuitSignals(const BWQuitSignals &) = delete;
    BWQuitSignals &operator=(const BWQuitSignals &) = delete;

private:
    void take();

    std::function<void()> m_end;
    QSocketNotifier m_notifier;
};
