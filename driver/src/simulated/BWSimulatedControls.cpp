// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/BWSimulatedControls.h"

#include "BWACUDriver/BWCameraSetting.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double driftPeriod = 24; // seconds
constexpr double driftShare = 0.04; // of the control's range

double nearestStep(const BWControlInfo &control, double value)
{
    const double step = control.step > 0 ? control.step : 1;
    const double steps = std::round((std::clamp(value, control.min, control.max) - control.min) / step);
    return std::min(control.min + steps * step, control.max);
}

} // namespace

BWSimulatedControls::BWSimulatedControls(const std::vector<BWControlInfo> &controls)
{
    for (const BWControlInfo &control : controls)
        m_controls.emplace(control.identifier, control);
}

double BWSimulatedControls::set(int identifier, double value)
{
    const auto found = m_controls.find(identifier);
    if (found == m_controls.end())
        return 0;
    BWControlInfo &control = found->second;
    if (!isAutomatic(identifier))
        control.value = nearestStep(control, value);
    return control.value;
}

double BWSimulatedControls::value(int identifier) const
{
    const auto found = m_controls.find(identifier);
    return found == m_controls.end() ? 0 : found->second.value;
}

BWPictureControls BWSimulatedControls::picture() const
{
    BWPictureControls picture;
    picture.hue = relative(BWSettingHue);
    picture.contrast = relative(BWSettingContrast);
    picture.saturation = relative(BWSettingSaturation);
    picture.brightness = relative(BWSettingBrightness);
    picture.sharpness = relative(BWSettingSharpness);
    picture.gamma = relative(BWSettingGamma);
    picture.whiteBalance = relative(BWSettingWhiteBalance);
    picture.gain = relative(BWSettingGain);
    picture.backlight = relative(BWSettingBacklight);
    picture.exposure = relative(BWSettingExposureAbsolute);
    return picture;
}

void BWSimulatedControls::advance(std::chrono::duration<double> time,
                                  const std::function<void(int identifier, double value)> &moved)
{
    m_time += time;
    const double drift = std::sin(2 * std::numbers::pi * m_time.count() / driftPeriod) * driftShare;
    for (const int identifier : {BWSettingWhiteBalance, BWSettingExposureAbsolute}) {
        if (!isAutomatic(identifier))
            continue;
        BWControlInfo &control = m_controls.at(identifier);
        const double next = nearestStep(control, control.defaultValue + drift * (control.max - control.min));
        if (next != control.value) {
            control.value = next;
            moved(identifier, next);
        }
    }
}

bool BWSimulatedControls::isAutomatic(int identifier) const
{
    const std::optional<int> mode = BWCameraSetting::automaticModeFor(identifier);
    return mode && m_controls.contains(identifier) && value(*mode) > 0;
}

double BWSimulatedControls::relative(int identifier) const
{
    const auto found = m_controls.find(identifier);
    if (found == m_controls.end() || isAutomatic(identifier))
        return 0;
    const BWControlInfo &control = found->second;
    const double room =
        control.value < control.defaultValue ? control.defaultValue - control.min : control.max - control.defaultValue;
    return room > 0 ? (control.value - control.defaultValue) / room : 0;
}
