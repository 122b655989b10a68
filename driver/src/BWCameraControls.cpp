#include "BWCameraControls.h"

#include <array>

namespace {

struct AutomaticMode {
    int mode;
    int moves; ///< the control that the mode moves
};

constexpr std::array automaticModes{
    AutomaticMode{BWSettingAutoWhite, BWSettingWhiteBalance},
    AutomaticMode{BWSettingAutoExposure, BWSettingExposureAbsolute},
};

} // namespace

BWCameraControls::BWCameraControls(const std::vector<BWControlInfo> &controls)
{
    for (const BWControlInfo &info : controls) {
        auto setting =
            std::make_shared<BWCameraSetting>(info.identifier, info.min, info.max, info.step, info.defaultValue);
        setting->setValue(info.value);
        m_taken[info.identifier] = info.value;
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
    const std::shared_ptr<BWCameraSetting> changed = setting(identifier);
    if (!changed)
        return;
    for (const AutomaticMode &automatic : automaticModes) {
        if (automatic.moves != identifier)
            continue;
        if (isOn(automatic.mode))
            m_held[identifier] = value;
        else
            m_held.erase(identifier);
    }
    send(device, *changed, value);

    for (const AutomaticMode &automatic : automaticModes) {
        if (automatic.mode != identifier || isOn(identifier))
            continue;
        const auto held = m_held.extract(automatic.moves);
        const std::shared_ptr<BWCameraSetting> moved = setting(automatic.moves);
        if (held && moved)
            send(device, *moved, held.mapped());
    }
}

void BWCameraControls::noteValue(int identifier, double value)
{
    if (const std::shared_ptr<BWCameraSetting> moved = setting(identifier))
        moved->setValue(value);
}

void BWCameraControls::send(BWCaptureDevice &device, BWCameraSetting &setting, double value)
{
    const double taken = device.setControl(setting.identifier(), value);
    m_taken[setting.identifier()] = taken;
    setting.setValue(taken);
}

bool BWCameraControls::isOn(int mode) const
{
    const auto taken = m_taken.find(mode);
    return taken != m_taken.end() && taken->second > 0;
}
