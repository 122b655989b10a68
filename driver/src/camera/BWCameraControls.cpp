#include "camera/BWCameraControls.h"

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
    const double taken = send(device, identifier, value);
    for (const AutomaticMode &automatic : automaticModes) {
        if (automatic.moves == identifier)
            m_asked[identifier] = value;
        const auto asked = m_asked.find(automatic.moves);
        if (automatic.mode == identifier && taken <= 0 && asked != m_asked.end())
            send(device, automatic.moves, asked->second);
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
