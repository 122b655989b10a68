// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraStatus.h"
#include "v4l2/device/BWVideoBuffers.h"
#include "v4l2/device/BWVideoFormat.h"
#include "v4l2/device/BWVideoModes.h"

/// The stream of one open node, from the choice of a format to the last frame. Capture thread.
class BWVideoStream {
public:
    /// What there was to take.
    enum class Taken {
        Frame,
        BadFrame, ///< flagged in error by the device, or too short; its number is known
        Nothing,
        Broken, ///< the stream has stopped delivering, for now or for good
    };

    /// Starts the first of the choice's modes that works. `name` is for the log. On failure everything is released, and
    /// the kind of the problem returned.
    BWStartProblem::Kind start(const BWKernelFile &node, const BWVideoModeChoice &choice, const QString &name,
                               const std::shared_ptr<const BWWakeUp> &wakeUp);
    /// Frames that are still held stay valid. May be called after an unplug, and without a stream.
    void stop();
    bool isRunning() const { return m_buffers != nullptr; }

    /// The size that the device really delivers.
    BWResolution resolution() const { return {m_format.width(), m_format.height()}; }

    Taken take(BWFrame &frame);

    /// False while frames held elsewhere leave the device without a buffer to fill.
    bool canDeliver() const { return m_buffers && m_buffers->anyQueued(); }

    static BWStartProblem::Kind problemOf(int error);

private:
    /// The kernel's result, and the call it belongs to.
    struct Outcome {
        int result = 0;
        const char *call = nullptr;
    };

    Outcome tryMode(const BWKernelFile &node, const BWVideoMode &mode, const std::shared_ptr<const BWWakeUp> &wakeUp);
    Outcome setMode(const BWKernelFile &node, const BWVideoMode &mode);
    uint64_t number(uint32_t sequence);

    std::shared_ptr<BWVideoBuffers> m_buffers;
    BWVideoFormat m_format;
    std::optional<uint64_t> m_lastNumber;
};
