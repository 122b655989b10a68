#pragma once

#include <chrono>
#include <cstdint>

/// When the frames of a stream are due. Counted from the start of the stream, so that delays do not add up.
class BWFrameSchedule {
public:
    using Time = std::chrono::steady_clock::time_point;

    void start(Time now, double framesPerSecond)
    {
        m_start = now;
        m_framesPerSecond = framesPerSecond;
        m_next = 0;
    }

    /// When the next frame is due.
    Time due() const
    {
        const std::chrono::duration<double> since(static_cast<double>(m_next + 1) / m_framesPerSecond);
        return m_start + std::chrono::duration_cast<Time::duration>(since);
    }

    void advance() { ++m_next; }

    /// Passes over frames that are so long overdue that the device's memory cannot hold them any more; tells how many.
    uint64_t skipOverdue(Time now, uint64_t backlog)
    {
        const std::chrono::duration<double> late = now - due();
        if (late.count() <= 0)
            return 0;
        const auto waiting = static_cast<uint64_t>(late.count() * m_framesPerSecond);
        const uint64_t skipped = waiting > backlog ? waiting - backlog : 0;
        m_next += skipped;
        return skipped;
    }

private:
    Time m_start;
    double m_framesPerSecond = 30;
    uint64_t m_next = 0;
};
