#include "BWACUDriver/BWCameraSetting.h"

#include <array>

namespace {

struct SettingNames {
    int identifier;
    const char *string;
    const char *name;
};

// The strings are also the names that the previous generation of the software stored.
constexpr std::array settingNames{
    SettingNames{BWSettingHue, "hue", "Hue"},
    SettingNames{BWSettingContrast, "contrast", "Contrast"},
    SettingNames{BWSettingSaturation, "saturation", "Saturation"},
    SettingNames{BWSettingBrightness, "brightness", "Brightness"},
    SettingNames{BWSettingSharpness, "sharpness", "Sharpness"},
    SettingNames{BWSettingGamma, "gamma", "Gamma"},
    SettingNames{BWSettingWhiteBalance, "whiteBalance", "White balance"},
    SettingNames{BWSettingAutoWhite, "autoWhite", "Automatic white balance"},
    SettingNames{BWSettingGain, "gain", "Gain"},
    SettingNames{BWSettingBacklight, "backlight", "Backlight compensation"},
    SettingNames{BWSettingAutoExposure, "autoExposure", "Automatic exposure"},
    SettingNames{BWSettingExposureAbsolute, "exposureAbsolute", "Exposure"},
    SettingNames{BWSettingVideoNorm, "videoNorm", "Video norm"},
};

const SettingNames *namesFor(int identifier)
{
    for (const SettingNames &names : settingNames) {
        if (names.identifier == identifier)
            return &names;
    }
    return nullptr;
}

} // namespace

BWCameraSetting::BWCameraSetting(int identifier, double min, double max, double step, double defaultValue)
    : m_identifier(identifier), m_min(min), m_max(max), m_step(step), m_default(defaultValue), m_value(defaultValue)
{
}

QString BWCameraSetting::stringForSettingIdentifier(int identifier)
{
    const SettingNames *names = namesFor(identifier);
    return names ? QString::fromLatin1(names->string) : QString();
}

QString BWCameraSetting::nameForSettingIdentifier(int identifier)
{
    const SettingNames *names = namesFor(identifier);
    return names ? QString::fromLatin1(names->name) : QString();
}

std::optional<int> BWCameraSetting::automaticModeFor(int identifier)
{
    switch (identifier) {
    case BWSettingWhiteBalance:
        return BWSettingAutoWhite;
    case BWSettingExposureAbsolute:
        return BWSettingAutoExposure;
    default:
        return std::nullopt;
    }
}
