#pragma once

#include "BWACUDriver/BWCamera.h"

#include <atomic>
#include <optional>

/// Lets whole frames pass and keeps the counts of a camera. Capture thread, except statistics().
class BWFrameInspector {
public:
    /// The device counts its frames from the beginning again.
    void streamStarted();
    void streamRestarted();

    /// Whether the frame is whole. Looks at sizes and at the ends of compressed images, never at every byte.
    bool accept(const BWFrame &frame);

    /// A frame that the device itself called bad; null where it delivered nothing.
    void reject(const BWFrame &frame);

    /// Any thread.
    BWCameraStatistics statistics() const;

private:
    void countGap(uint64_t sequence);

    std::optional<uint64_t> m_lastSequence;
    uint64_t m_unnumbered = 0; ///< bad frames since then of which the sequence is not known
    std::atomic<uint64_t> m_delivered{0};
    std::atomic<uint64_t> m_bad{0};
    std::atomic<uint64_t> m_lost{0};
    std::atomic<uint64_t> m_restarts{0};
};
