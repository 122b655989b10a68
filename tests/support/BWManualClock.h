// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWClock.h"

#include <map>
#include <mutex>
#include <optional>
#include <QPointer>

/// A clock that stands still until a test moves it. advance() runs what falls due, in order of time, on the calling
/// thread, which must be the thread of the queues used.
class BWManualClock : public BWClock {
public:
    std::chrono::nanoseconds now() const override;
    void callAfter(std::chrono::nanoseconds delay, QObject *queue, Callback callback) override;

    void advance(std::chrono::nanoseconds time);

private:
    struct Entry {
        QPointer<QObject> queue;
        Callback callback;
    };

    std::optional<Entry> takeNext(std::chrono::nanoseconds end);

    mutable std::mutex m_mutex;
    std::chrono::nanoseconds m_now{0};
    std::multimap<std::chrono::nanoseconds, Entry> m_entries; ///< equal times keep the order of their calls
};
