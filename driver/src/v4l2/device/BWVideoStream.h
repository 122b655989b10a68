#pragma once

#include "BWACUDriver/BWStartProblem.h"
#include "v4l2/device/BWVideoBuffers.h"
#include "v4l2/device/BWVideoFormat.h"
#include "v4l2/device/BWVideoModes.h"

/// The stream of one open node, from the choice of a format to the last frame. Capture thread.
class BWVideoStream {
public:
    /// Whether there is something to take.
    enum class Taken {
        Frame,
        BadFrame, ///< flagged in error by the device, or too short; its number is known
        Nothing,
        Broken, ///< the stream delivers nothing any more, for now or for good
    };

    /// Begins with the best mode of the choice that the device can carry. `name` is for the log. On failure everything
    /// is given back; the kind of the problem is told, not who holds the device.
    BWStartProblem::Kind start(const BWKernelFile &node, const BWVideoModeChoice &choice, const QString &name,
                               const std::shared_ptr<const BWWakeUp> &wakeUp);
    /// Frames that are still held stay valid. Also after an unplug, and without a stream.
    void stop();
    bool isRunning() const { return m_buffers != nullptr; }

    /// What the device really delivers.
    BWResolution resolution() const { return {m_format.width(), m_format.height()}; }

    Taken take(BWFrame &frame);

    /// False while frames held elsewhere leave the device without a buffer to fill.
    bool canDeliver() const { return m_buffers && m_buffers->anyQueued(); }

    static BWStartProblem::Kind problemOf(int error);

private:
    /// What the kernel said, and to which call.
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
