// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCaptureDevice.h"
#include "simulated/BWSimulatedCable.h"
#include "simulated/BWSimulatedControls.h"
#include "simulated/BWSimulatedProfile.h"
#include "simulated/picture/BWPictureSource.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

/// A fixed number of reusable frame buffers, like those of a capture device. Any thread.
class BWBufferPool {
public:
    struct Buffer {
        std::vector<uint8_t> bytes; ///< at first left over from earlier use
        BWPictureSource::KeptBytes passedOn; ///< in place of them, if not empty
    };

    explicit BWBufferPool(std::size_t count);

    /// A free buffer; null if there is none.
    Buffer *acquire();
    void release(Buffer *buffer);

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Buffer>> m_buffers;
    std::vector<Buffer *> m_free;
};

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

    /// When the next frame is due; the first one at once.
    Time due() const
    {
        const std::chrono::duration<double> since(static_cast<double>(m_next) / m_framesPerSecond);
        return m_start + std::chrono::duration_cast<Time::duration>(since);
    }

    void advance() { ++m_next; }

    /// Skips frames so long overdue that the device's memory can no longer hold them; returns how many.
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

/// One opened simulated camera. Its frames are drawn on the capture thread into a fixed number of buffers; while all of
/// them are held elsewhere, frames are lost, as with a real camera.
class BWSimulatedDevice : public BWCaptureDevice {
public:
    BWSimulatedDevice(BWSimulatedCameraOptions options, std::shared_ptr<BWSimulatedCable> cable,
                      std::shared_ptr<const BWSimulatedObstacle> obstacle);
    ~BWSimulatedDevice() override;

    void setEvents(std::function<void()> button, std::function<void(int identifier, double value)> control) override;
    std::vector<BWControlInfo> controls() const override;
    BWResolution resolution() const override;
    void setResolution(BWResolution requested) override;
    BWStartProblem startStreaming() override;
    void stopStreaming() override;
    WaitResult waitFrame(std::chrono::milliseconds timeout, BWFrame &frame) override;
    void interrupt() override;
    bool expectsFrames() const override;
    double setControl(int identifier, double value) override;
    void setVideoNorm(int norm) override;
    int readRegister(int identifier) override;
    void writeRegister(int identifier, int value) override;

private:
    BWPictureSource &picture();
    BWSimulatedProfile::Mode mode();
    /// False when there is no buffer for it.
    bool capture(BWSimulatedCable::Time time, BWSimulatedCable::Fault fault, BWFrame &frame);
    BWPlane draw(BWBufferPool::Buffer &buffer, BWSimulatedCable::Fault fault);

    const BWSimulatedCameraOptions m_options;
    const BWSimulatedProfile &m_profile;
    const std::shared_ptr<BWSimulatedCable> m_cable;
    const std::shared_ptr<const BWSimulatedObstacle> m_obstacle;
    std::function<void(int identifier, double value)> m_control;
    BWSimulatedControls m_controls;
    std::array<uint8_t, 256> m_registers{};

    BWResolution m_resolution{640, 480};
    std::unique_ptr<BWPictureSource> m_picture; ///< made by the first start
    BWSimulatedProfile::Mode m_mode;
    std::shared_ptr<BWBufferPool> m_pool; ///< also kept by the frames
    BWFrameSchedule m_schedule;
    uint64_t m_sequence = 0; ///< of the next frame in this stream
    uint64_t m_pictureIndex = 0; ///< continues over restarts
};
