// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <optional>
#include <QString>

/// Numeric camera-control codes. They are part of stored settings and must keep their numbers; 6 is not used.
enum BWSettingCode : int {
    BWSettingHue = 0,
    BWSettingContrast = 1,
    BWSettingSaturation = 2,
    BWSettingBrightness = 3,
    BWSettingSharpness = 4,
    BWSettingGamma = 5,
    BWSettingWhiteBalance = 7, ///< white-balance temperature
    BWSettingAutoWhite = 8, ///< automatic white balance, 0 or 1
    BWSettingGain = 9,
    BWSettingBacklight = 10, ///< backlight compensation
    BWSettingAutoExposure = 11, ///< automatic exposure, 0 or 1
    BWSettingExposureAbsolute = 12,
    BWSettingVideoNorm = 13, ///< index of the video norm of an analog receiver
};

/// One control of one camera: its code, range and last known value.
///
/// Owned by the camera session object; hold it weakly. Everything but the value is fixed. value() may be read on any
/// thread: an automatic mode of the camera moves it from the capture thread.
class BWCameraSetting {
public:
    BWCameraSetting(int identifier, double min, double max, double step, double defaultValue);

    int identifier() const { return m_identifier; }
    double min() const { return m_min; }
    double max() const { return m_max; }
    double step() const { return m_step; }
    double defaultValue() const { return m_default; }

    double value() const { return m_value.load(std::memory_order_relaxed); }
    /// Only stores the value; BWCamera::setSetting() sends one to the camera.
    void setValue(double value) { m_value.store(value, std::memory_order_relaxed); }

    /// Stable text identifier of a control, such as "whiteBalance"; null for an unknown code.
    static QString stringForSettingIdentifier(int identifier);
    /// English display name of a control, such as "White balance"; null for an unknown code.
    static QString nameForSettingIdentifier(int identifier);

    /// The code of the automatic mode that moves this control while it is on; nothing if there is none.
    static std::optional<int> automaticModeFor(int identifier);

private:
    int m_identifier;
    double m_min;
    double m_max;
    double m_step;
    double m_default;
    std::atomic<double> m_value;
};
