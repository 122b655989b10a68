// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraStatus.h"
#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"

#include <chrono>
#include <functional>
#include <QString>
#include <vector>

/// One control of a device.
struct BWControlInfo {
    int identifier = 0; ///< BWSettingCode
    double min = 0;
    double max = 0;
    double step = 1;
    double defaultValue = 0;
    double value = 0;
};

/// A backend's side of a session on one device. BWCamera owns it and calls it on its capture thread only, except
/// where noted, so an implementation needs no lock of its own for what it does there.
class BWCaptureDevice {
public:
    enum class WaitResult {
        Frame, ///< a good frame
        BadFrame, ///< a frame that must be skipped (flagged in error by the device)
        Nothing, ///< the time is over, or interrupt() was called
        Gone, ///< the device was unplugged; it delivers no more frames
    };

    virtual ~BWCaptureDevice() = default;

    /// Called once before anything else, on any thread. The callbacks may be called on any thread until the device is
    /// destroyed: `button` for each press, `control` when the device itself moved a control.
    virtual void setEvents(std::function<void()> button, std::function<void(int identifier, double value)> control) = 0;

    /// Fixed for the life of the device. Any thread.
    virtual std::vector<BWControlInfo> controls() const = 0;

    /// The size the device is set to. Called on the capture thread, and once before it runs. A start may change it: only
    /// then does a device state what it really delivers.
    virtual BWResolution resolution() const = 0;
    /// Sets the nearest size that the device has. Called only while not streaming.
    virtual void setResolution(BWResolution requested) = 0;

    virtual BWStartProblem startStreaming() = 0;
    /// Frames that are still held elsewhere stay valid afterwards.
    virtual void stopStreaming() = 0;

    /// Waits for the next frame while streaming.
    virtual WaitResult waitFrame(std::chrono::milliseconds timeout, BWFrame &frame) = 0;
    /// Makes a waiting waitFrame(), or else the next one, return at once. Any thread.
    virtual void interrupt() = 0;

    /// False while no frame is due, as with a camera whose frames are requested one by one: silence is then not taken
    /// for a fault. Capture thread.
    virtual bool expectsFrames() const { return true; }

    /// Whether presses of the device's button reach the button event whichever window has the keyboard. Any thread.
    virtual bool readsButton() const { return true; }

    /// Sets one control and returns the value that the device accepted.
    virtual double setControl(int identifier, double value) = 0;

    // Bridge-chip devices only.
    virtual void setVideoNorm(int norm) { Q_UNUSED(norm) }
    virtual int readRegister(int identifier)
    {
        Q_UNUSED(identifier)
        return 0;
    }
    virtual void writeRegister(int identifier, int value)
    {
        Q_UNUSED(identifier)
        Q_UNUSED(value)
    }
    /// Why the last access to a register failed, in plain English for a technician; null if it did not.
    virtual QString registerProblem() const { return {}; }
};
