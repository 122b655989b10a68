// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCaptureDevice.h"
#include "BWACUDriver/BWSimulatedCameras.h"

#include <optional>
#include <vector>

/// What a type of simulated camera can do.
struct BWSimulatedProfile {
    struct Mode {
        BWPixelFormat format = BWPixelFormat::YUYV;
        double framesPerSecond = 0;
    };

    BWCameraDescriptionPtr description;
    std::vector<BWControlInfo> controls; ///< the defaults are the factory values of the type's first product
    bool analog = false; ///< an analog receiver: raw only, at the rate of its video norm

    static const BWSimulatedProfile &forType(BWSimulatedCameraOptions::Type type);

    /// How the camera streams that size: in the requested format, or else in the faster one, raw if both are equally fast.
    Mode mode(BWResolution resolution, std::optional<BWPixelFormat> requested, int videoNorm) const;
};
