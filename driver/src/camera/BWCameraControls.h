// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraSetting.h"
#include "BWACUDriver/BWCaptureDevice.h"

#include <map>
#include <memory>
#include <vector>

/// The controls of one opened camera and the values last requested for them.
///
/// While an automatic mode of the camera moves a control (white balance, exposure), a value sent for that control has
/// no lasting effect. So the value last requested is sent again when the mode is switched off: in whatever order a mode
/// and its control are set, both end up as requested.
class BWCameraControls {
public:
    explicit BWCameraControls(const std::vector<BWControlInfo> &controls);

    /// Null for a control that the device does not have. Any thread.
    std::shared_ptr<BWCameraSetting> setting(int identifier) const;

    /// Sends a value within the control's range and stores what the device accepted. Capture thread.
    void apply(BWCaptureDevice &device, int identifier, double value);

    /// The device moved a control by itself. Any thread.
    void noteValue(int identifier, double value);

private:
    /// Returns what the device accepted.
    double send(BWCaptureDevice &device, int identifier, double value);

    std::map<int, std::shared_ptr<BWCameraSetting>> m_settings;
    std::map<int, double> m_requested; ///< last, for the controls that an automatic mode may move
};
