#include "Model/Products/BWAutomaticModes.h"

#include "BWACUDriver/BWCamera.h"

std::optional<int> BWAutomaticModes::modeHolding(int setting, const BWCamera &camera)
{
    const std::optional<int> mode = BWCameraSetting::automaticModeFor(setting);
    if (!mode || !camera.settingForIdentifier(setting))
        return std::nullopt;
    const auto state = camera.settingForIdentifier(*mode);
    return state && state->value() > 0 ? mode : std::nullopt;
}
