// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>

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
