// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"

#include <atomic>
#include <optional>

/// Accepts whole frames only, and keeps the counts of a camera. Capture thread, except statistics().
class BWFrameInspector {
public:
    /// The device starts counting its frames anew.
    void streamStarted();
    void streamRestarted();

    /// Whether the frame is whole. Checks sizes and the ends of compressed images, never every byte.
    bool accept(const BWFrame &frame);

    /// A frame that the device itself flagged as bad; null if it delivered nothing.
    void reject(const BWFrame &frame);

    /// Any thread.
    BWCameraStatistics statistics() const;

private:
    void countGap(uint64_t sequence);

    std::optional<uint64_t> m_lastSequence;
    uint64_t m_unnumbered = 0; ///< bad frames since then without a sequence number
    std::atomic<uint64_t> m_delivered{0};
    std::atomic<uint64_t> m_bad{0};
    std::atomic<uint64_t> m_lost{0};
    std::atomic<uint64_t> m_restarts{0};
};
