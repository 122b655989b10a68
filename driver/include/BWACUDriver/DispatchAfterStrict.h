// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWClock.h"

#include <functional>
#include <memory>

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
