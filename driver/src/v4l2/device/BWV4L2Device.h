// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCaptureDevice.h"
#include "v4l2/device/BWBridgeRegisters.h"
#include "v4l2/device/BWButtonReader.h"
#include "v4l2/device/BWVideoControls.h"
#include "v4l2/device/BWVideoStream.h"
#include "v4l2/finding/BWVideoNode.h"

#include <QByteArray>

/// A camera of the kernel. Its node is open only while it streams, and for a moment at each change otherwise, so that
/// other programs can use the camera.
class BWV4L2Device : public BWCaptureDevice {
public:
    /// Returns the event node of the camera's button, null if it has none.
    using FindButton = std::function<QByteArray()>;

    /// Touches no hardware. `findButton` is called at each start, on the capture thread. `bridgeChip`: the camera has
    /// registers. `kernel` must outlive every frame.
    BWV4L2Device(BWVideoNode node, BWVideoAbilities abilities, bool bridgeChip, FindButton findButton,
                 BWKernelCalls &kernel = BWKernelCalls::system());
    ~BWV4L2Device() override;

    void setEvents(std::function<void()> button, std::function<void(int identifier, double value)> control) override;
    std::vector<BWControlInfo> controls() const override;
    BWResolution resolution() const override;
    void setResolution(BWResolution requested) override;
    BWStartProblem startStreaming() override;
    void stopStreaming() override;
    WaitResult waitFrame(std::chrono::milliseconds timeout, BWFrame &frame) override;
    void interrupt() override;
    bool expectsFrames() const override { return m_stream.canDeliver(); }
    bool readsButton() const override { return m_button.isOpen(); }
    double setControl(int identifier, double value) override;
    void setVideoNorm(int norm) override;
    int readRegister(int identifier) override;
    void writeRegister(int identifier, int value) override;
    QString registerProblem() const override;

private:
    using Clock = std::chrono::steady_clock;

    struct Ready {
        short node = 0; ///< events of the poll; 0 also while the node is not polled
        bool button = false;
    };

    /// Null if it cannot be opened, and the reason in `error`. A node that now belongs to another device counts as gone.
    std::unique_ptr<const BWKernelFile> openNode(int &error) const;
    int applyNorm(const BWKernelFile &node) const;
    BWStartProblem problem(BWStartProblem::Kind kind) const;
    /// Waits until there is something to do, at most until the deadline.
    Ready waitUntil(Clock::time_point deadline);
    WaitResult takeFrame(short events, BWFrame &frame);
    bool isGone() const;

    const BWVideoNode m_node;
    const BWVideoAbilities m_abilities;
    const QString m_name; ///< for the log
    const FindButton m_findButton;
    std::optional<BWBridgeRegisters> m_registers; ///< of a bridge chip
    BWKernelCalls &m_kernel;
    std::function<void()> m_pressed;
    const std::shared_ptr<const BWWakeUp> m_wakeUp;
    std::atomic<bool> m_interrupted = false;
    BWResolution m_resolution;
    std::optional<uint64_t> m_norm; ///< V4L2 standard; left alone until one is requested
    BWVideoControls m_controls;

    // While it streams.
    std::unique_ptr<const BWKernelFile> m_file;
    BWVideoStream m_stream;
    BWButtonReader m_button;
    bool m_hasEvents = false; ///< the node reports controls that change
    bool m_wasBroken = false;
    Clock::time_point m_ignoreNodeUntil; ///< a poll of the node would return at once until then, again and again
    Clock::time_point m_nextReading; ///< of the controls that automatic modes change
};
