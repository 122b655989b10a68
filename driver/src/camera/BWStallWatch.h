#pragma once

#include <chrono>

/// Tells when a stream has been silent for too long. One thread.
class BWStallWatch {
public:
    using Time = std::chrono::steady_clock::time_point;

    void setLimit(std::chrono::milliseconds limit) { m_limit = limit; }

    /// A sign of life, or a fresh start.
    void restart(Time now) { m_since = now; }

    /// Time left until the stream counts as stalled; 0 when it does.
    std::chrono::milliseconds remaining(Time now) const
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_since + m_limit - now);
        return left > std::chrono::milliseconds(0) ? left : std::chrono::milliseconds(0);
    }
    bool expired(Time now) const { return remaining(now) == std::chrono::milliseconds(0); }

private:
    std::chrono::milliseconds m_limit{2000};
    Time m_since;
};
