// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/BWSimulatedProfile.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"

#include <algorithm>
#include <array>

namespace {

using Type = BWSimulatedCameraOptions::Type;

/// Frames per second that fit through USB 2 at about 20 MB/s, raw and compressed.
struct Rates {
    BWResolution resolution;
    double raw;
    double compressed;
};

constexpr std::array ratesBySize{
    Rates{{640, 480}, 30, 30},  Rates{{720, 480}, 30, 30},  Rates{{800, 600}, 20, 30},  Rates{{1024, 768}, 12, 30},
    Rates{{1280, 720}, 10, 30}, Rates{{1280, 960}, 8, 30},  Rates{{1280, 1024}, 8, 30}, Rates{{1600, 1200}, 5, 30},
    Rates{{1920, 1080}, 5, 30}, Rates{{2048, 1536}, 3, 15}, Rates{{2592, 1944}, 2, 15},
};

/// Default and value are the same when a camera is plugged in.
BWControlInfo control(int identifier, double min, double max, double defaultValue, double step = 1)
{
    return {identifier, min, max, step, defaultValue, defaultValue};
}

std::vector<BWControlInfo> ultraControls()
{
    return {
        control(BWSettingHue, -40, 40, 0),
        control(BWSettingContrast, 0, 95, 32),
        control(BWSettingSaturation, 0, 128, 64),
        control(BWSettingBrightness, -64, 64, 0),
        control(BWSettingSharpness, 0, 6, 3),
        control(BWSettingGamma, 40, 300, 100),
        control(BWSettingWhiteBalance, 2800, 6500, 4600, 10),
        control(BWSettingAutoWhite, 0, 1, 1),
        control(BWSettingGain, 0, 100, 0),
        control(BWSettingBacklight, 0, 2, 1),
        control(BWSettingAutoExposure, 0, 1, 1),
        control(BWSettingExposureAbsolute, 1, 5000, 157),
    };
}

std::vector<BWControlInfo> highControls()
{
    return {
        control(BWSettingHue, -180, 180, 0),         control(BWSettingContrast, 0, 30, 15),
        control(BWSettingSaturation, 0, 30, 15),     control(BWSettingBrightness, 0, 255, 160),
        control(BWSettingSharpness, 0, 26, 13),      control(BWSettingGamma, 20, 250, 78),
        control(BWSettingWhiteBalance, 0, 255, 128), control(BWSettingAutoWhite, 0, 1, 1),
    };
}

std::vector<BWControlInfo> regularControls()
{
    return {
        control(BWSettingHue, -180, 180, 0),         control(BWSettingContrast, 0, 30, 13),
        control(BWSettingSaturation, 0, 30, 15),     control(BWSettingBrightness, 0, 255, 152),
        control(BWSettingSharpness, 0, 30, 15),      control(BWSettingGamma, 20, 250, 64),
        control(BWSettingWhiteBalance, 0, 255, 120), control(BWSettingAutoWhite, 0, 1, 0),
    };
}

std::vector<BWControlInfo> wirelessControls()
{
    return {
        control(BWSettingHue, 0, 127, 63),        control(BWSettingContrast, 0, 63, 28),
        control(BWSettingSaturation, 0, 127, 56), control(BWSettingBrightness, 0, 255, 130),
        control(BWSettingSharpness, 0, 15, 10),   control(BWSettingVideoNorm, 0, 2, 1),
    };
}

} // namespace

const BWSimulatedProfile &BWSimulatedProfile::forType(BWSimulatedCameraOptions::Type type)
{
    using Detector = BWCameraDetector;
    static const BWSimulatedProfile dx20{Detector::descriptionForDX20(), ultraControls()};
    static const BWSimulatedProfile regular{Detector::descriptionForRegularMicroscope(), regularControls()};
    static const BWSimulatedProfile high{Detector::descriptionForHighResolutionMicroscope(), highControls()};
    static const BWSimulatedProfile ultra{Detector::descriptionForUltraResolutionMicroscope(), ultraControls()};
    static const BWSimulatedProfile wireless{Detector::descriptionForReceptorWirelessMicroscope(), wirelessControls(),
                                             true};
    switch (type) {
    case Type::DX20:
        return dx20;
    case Type::Regular:
        return regular;
    case Type::High:
        return high;
    case Type::Ultra:
        return ultra;
    case Type::Wireless:
        break;
    }
    return wireless;
}

BWSimulatedProfile::Mode BWSimulatedProfile::mode(BWResolution resolution, std::optional<BWPixelFormat> requested,
                                                  int videoNorm) const
{
    constexpr double ntsc = 30000.0 / 1001.0;
    if (analog)
        return {BWPixelFormat::YUYV, videoNorm == 0 ? ntsc : 25.0};
    const auto rates = std::find_if(ratesBySize.begin(), ratesBySize.end(),
                                    [resolution](const Rates &entry) { return entry.resolution == resolution; });
    Q_ASSERT(rates != ratesBySize.end());
    const bool raw = requested ? *requested != BWPixelFormat::MJPEG : rates->raw >= rates->compressed;
    return raw ? Mode{BWPixelFormat::YUYV, rates->raw} : Mode{BWPixelFormat::MJPEG, rates->compressed};
}
