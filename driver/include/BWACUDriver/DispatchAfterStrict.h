#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <QPointer>

class QObject;

/// Time and timers, so that a test can move time by hand.
class BWClock {
public:
    using Callback = std::function<void()>;

    virtual ~BWClock() = default;

    /// Monotonic time since an arbitrary moment.
    virtual std::chrono::nanoseconds now() const = 0;

    /// Runs `callback` once on the event loop of the thread that `queue` lives in, `delay` from now; not at all if
    /// `queue` has been destroyed by then.
    virtual void callAfter(std::chrono::nanoseconds delay, QObject *queue, Callback callback) = 0;

    /// The real clock.
    static BWClock &system();
};

/// A clock that stands still until it is told to move. advance() runs what falls due, in order of time, on the calling
/// thread, which must be the thread of the queues used. For tests.
class BWManualClock : public BWClock {
public:
    BWManualClock();
    ~BWManualClock() override;

    std::chrono::nanoseconds now() const override;
    void callAfter(std::chrono::nanoseconds delay, QObject *queue, Callback callback) override;

    void advance(std::chrono::nanoseconds time);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// Cancellable delayed execution.
class DispatchAfterStrict {
public:
    using Handle = std::shared_ptr<DispatchAfterStrict>;

    /// Runs `block` once on the event loop of the thread that `queue` lives in, after `delay` seconds, and returns a
    /// handle. The block runs whether or not the handle is kept, unless it is cancelled or `queue` is destroyed first.
    static Handle dispatchForQueue(QObject *queue, std::function<void()> block, double delay,
                                   BWClock &clock = BWClock::system());

    /// The block does not run if it has not started yet; otherwise without effect. Thread of the queue.
    void cancel();

private:
    std::function<void()> m_block;
};
