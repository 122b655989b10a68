// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/BWCameraControls.h"

BWCameraControls::BWCameraControls(const std::vector<BWControlInfo> &controls)
{
    for (const BWControlInfo &info : controls) {
        auto setting =
            std::make_shared<BWCameraSetting>(info.identifier, info.min, info.max, info.step, info.defaultValue);
        setting->setValue(info.value);
        m_settings.emplace(info.identifier, std::move(setting));
    }
}

std::shared_ptr<BWCameraSetting> BWCameraControls::setting(int identifier) const
{
    const auto found = m_settings.find(identifier);
    return found == m_settings.end() ? nullptr : found->second;
}

void BWCameraControls::apply(BWCaptureDevice &device, int identifier, double value)
{
    if (!setting(identifier))
        return;
    if (BWCameraSetting::automaticModeFor(identifier))
        m_requested[identifier] = value;
    if (send(device, identifier, value) > 0)
        return;
    for (const auto &[control, requested] : m_requested) {
        if (BWCameraSetting::automaticModeFor(control) == identifier)
            send(device, control, requested);
    }
}

void BWCameraControls::noteValue(int identifier, double value)
{
    if (const std::shared_ptr<BWCameraSetting> moved = setting(identifier))
        moved->setValue(value);
}

double BWCameraControls::send(BWCaptureDevice &device, int identifier, double value)
{
    const double taken = device.setControl(identifier, value);
    m_settings.at(identifier)->setValue(taken);
    return taken;
}
