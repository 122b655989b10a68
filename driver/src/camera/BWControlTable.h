// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraSetting.h"

#include <array>
#include <cstdint>
#include <linux/v4l2-controls.h>

/// Controls that a type of camera has together.
enum class BWControlGroup { Picture, Colour, Exposure, Receiver };

/// What the driver knows about one control.
struct BWKnownControl {
    int code; ///< BWSettingCode
    BWControlGroup group;
    const char *string; ///< text identifier, and the name that the previous generation of the software stored
    const char *name; ///< English display name
    uint32_t v4l2Id; ///< 0 for the video norm, which is no V4L2 control
    std::optional<int> automaticMode{}; ///< code of the mode that moves it
};

/// All controls, in the order in which types of cameras and products list theirs. A control is its code in BWSettingCode
/// and a row here.
inline constexpr std::array BWControlTable{
    BWKnownControl{BWSettingHue, BWControlGroup::Picture, "hue", "Hue", V4L2_CID_HUE},
    BWKnownControl{BWSettingContrast, BWControlGroup::Picture, "contrast", "Contrast", V4L2_CID_CONTRAST},
    BWKnownControl{BWSettingSaturation, BWControlGroup::Picture, "saturation", "Saturation", V4L2_CID_SATURATION},
    BWKnownControl{BWSettingBrightness, BWControlGroup::Picture, "brightness", "Brightness", V4L2_CID_BRIGHTNESS},
    BWKnownControl{BWSettingSharpness, BWControlGroup::Picture, "sharpness", "Sharpness", V4L2_CID_SHARPNESS},
    BWKnownControl{BWSettingGamma, BWControlGroup::Colour, "gamma", "Gamma", V4L2_CID_GAMMA},
    BWKnownControl{BWSettingWhiteBalance, BWControlGroup::Colour, "whiteBalance", "White balance",
                   V4L2_CID_WHITE_BALANCE_TEMPERATURE, BWSettingAutoWhite},
    BWKnownControl{BWSettingAutoWhite, BWControlGroup::Colour, "autoWhite", "Automatic white balance",
                   V4L2_CID_AUTO_WHITE_BALANCE},
    BWKnownControl{BWSettingGain, BWControlGroup::Exposure, "gain", "Gain", V4L2_CID_GAIN},
    BWKnownControl{BWSettingBacklight, BWControlGroup::Exposure, "backlight", "Backlight compensation",
                   V4L2_CID_BACKLIGHT_COMPENSATION},
    BWKnownControl{BWSettingAutoExposure, BWControlGroup::Exposure, "autoExposure", "Automatic exposure",
                   V4L2_CID_EXPOSURE_AUTO},
    BWKnownControl{BWSettingExposureAbsolute, BWControlGroup::Exposure, "exposureAbsolute", "Exposure",
                   V4L2_CID_EXPOSURE_ABSOLUTE, BWSettingAutoExposure},
    BWKnownControl{BWSettingVideoNorm, BWControlGroup::Receiver, "videoNorm", "Video norm", 0},
};
