#pragma once

#include "BWACUDriver/BWCameraSetting.h"
#include "BWACUDriver/BWCaptureDevice.h"

#include <map>
#include <memory>
#include <vector>

/// The controls of one opened camera and what has been asked of them.
///
/// While an automatic mode of the camera moves a control (white balance, exposure), a value sent for that control has
/// no lasting effect, and what it had before is gone. So what was asked last is sent again when the mode is switched
/// off: in whatever order a mode and its control are set, the camera then does what was asked of both.
class BWCameraControls {
public:
    explicit BWCameraControls(const std::vector<BWControlInfo> &controls);

    /// Null for a control that the device does not have. Any thread.
    std::shared_ptr<BWCameraSetting> setting(int identifier) const;

    /// Sends a value from the control's range and notes what the device took. Capture thread.
    void apply(BWCaptureDevice &device, int identifier, double value);

    /// The device moved a control by itself. Any thread.
    void noteValue(int identifier, double value);

private:
    /// Returns what the device took.
    double send(BWCaptureDevice &device, int identifier, double value);

    std::map<int, std::shared_ptr<BWCameraSetting>> m_settings;
    std::map<int, double> m_asked; ///< last, of the controls that an automatic mode may move
};
