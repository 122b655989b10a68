#pragma once

#include "BWACUDriver/BWCaptureDevice.h"
#include "simulated/BWBufferPool.h"
#include "simulated/BWFrameSchedule.h"
#include "simulated/BWSimulatedCable.h"
#include "simulated/BWSimulatedControls.h"
#include "simulated/BWSimulatedObstacle.h"
#include "simulated/BWSimulatedProfile.h"

#include <array>
#include <memory>

/// One opened simulated camera. Its frames are drawn on the capture thread into a fixed number of buffers; while all of
/// them are held elsewhere, frames are lost as they are with a real camera.
class BWSimulatedDevice : public BWCaptureDevice {
public:
    BWSimulatedDevice(BWSimulatedCameraOptions options, std::shared_ptr<BWSimulatedCable> cable,
                      std::shared_ptr<const BWSimulatedObstacle> obstacle);
    ~BWSimulatedDevice() override;

    void setEvents(std::function<void()> button, std::function<void(int identifier, double value)> control) override;
    std::vector<BWControlInfo> controls() const override;
    BWResolution resolution() const override;
    void setResolution(BWResolution wished) override;
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
    BWPlane draw(BWBufferPool::Bytes &bytes, BWSimulatedCable::Fault fault);

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
    uint64_t m_pictureIndex = 0; ///< goes on over restarts
};
