#pragma once

#include "BWACUDriver/BWCameraSetting.h"
#include "BWACUDriver/BWCaptureDevice.h"

#include <map>
#include <memory>
#include <vector>

/// The controls of one opened camera and what has been asked of them.
///
/// While an automatic mode of the camera moves a control (white balance, exposure), a value sent for that control has
/// no lasting effect; it is remembered and sent again when the mode is switched off, so that the camera then does what
/// was asked last.
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
    void send(BWCaptureDevice &device, BWCameraSetting &setting, double value);
    bool isOn(int mode) const;

    std::map<int, std::shared_ptr<BWCameraSetting>> m_settings;
    // Users of a setting may note a value in it before it is sent, so what the device has is kept apart.
    std::map<int, double> m_taken;
    std::map<int, double> m_held; ///< values asked for while an automatic mode had the control
};
