#pragma once

#include "BWACUDriver/BWCaptureDevice.h"
#include "v4l2/BWBridgeRegisters.h"
#include "v4l2/BWKernelCalls.h"
#include "v4l2/BWVideoAbilities.h"
#include "v4l2/BWVideoNode.h"

#include <memory>
#include <QByteArray>

/// One opened camera of the kernel. Its node is open only while it streams, and for the moment of a change otherwise,
/// so that other programs can have the camera.
class BWV4L2Device : public BWCaptureDevice {
public:
    /// Touches no hardware. `findButton` is called at each start, on the capture thread, and returns the event node of
    /// the camera's button, null if it has none. `registers` are those of a bridge chip, null without one. `kernel`
    /// must live longer than every frame.
    BWV4L2Device(BWVideoNode node, BWVideoAbilities abilities, std::function<QByteArray()> findButton,
                 std::unique_ptr<BWBridgeRegisters> registers = nullptr,
                 BWKernelCalls &kernel = BWKernelCalls::system());
    ~BWV4L2Device() override;

    void setEvents(std::function<void()> button, std::function<void(int identifier, double value)> control) override;
    std::vector<BWControlInfo> controls() const override;
    BWResolution resolution() const override;
    void setResolution(BWResolution wished) override;
    BWStartProblem startStreaming() override;
    void stopStreaming() override;
    WaitResult waitFrame(std::chrono::milliseconds timeout, BWFrame &frame) override;
    void interrupt() override;
    bool readsButton() const override;
    double setControl(int identifier, double value) override;
    void setVideoNorm(int norm) override;
    int readRegister(int identifier) override;
    void writeRegister(int identifier, int value) override;
    QString registerProblem() const override;
};
