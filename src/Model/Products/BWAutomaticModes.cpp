#include "Model/Products/BWAutomaticModes.h"

#include "BWACUDriver/BWCamera.h"

namespace {

std::optional<int> modeFor(int setting)
{
    switch (setting) {
    case BWSettingWhiteBalance:
        return BWSettingAutoWhite;
    case BWSettingExposureAbsolute:
        return BWSettingAutoExposure;
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<int> BWAutomaticModes::modeHolding(int setting, const BWCamera &camera)
{
    const std::optional<int> mode = modeFor(setting);
    if (!mode || !camera.settingForIdentifier(setting))
        return std::nullopt;
    const auto state = camera.settingForIdentifier(*mode);
    return state && state->value() > 0 ? mode : std::nullopt;
}
