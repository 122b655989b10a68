// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"

#include <cstdint>
#include <QString>
#include <vector>

class BWKernelFile;
struct BWVideoAbilities;

/// The time from one frame to the next: a fraction of seconds, 0/0 if not known.
struct BWVideoInterval {
    uint32_t numerator = 0;
    uint32_t denominator = 0;
};

/// A pixel format at a size, and how fast the device says it delivers that.
struct BWVideoMode {
    uint32_t fourcc = 0; ///< V4L2 pixel format
    BWPixelFormat pixelFormat = BWPixelFormat::None; ///< ours; None for a format that we do not show
    BWResolution resolution;
    double framesPerSecond = 0; ///< the highest; 0 if the device does not say
    BWVideoInterval interval; ///< the same, as the device put it

    /// Asks an open node for its pixel formats, their sizes and rates. Sets nothing.
    static std::vector<BWVideoMode> readAll(const BWKernelFile &node);
};

/// The mode in which a device is to stream at a requested size.
///
/// Colour before grey, then the highest rate; at equal rates the format that costs least to show, raw before
/// compressed. So MJPEG is chosen where the bus carries raw pictures only slowly.
class BWVideoModeChoice {
public:
    /// Uses the nearest size if the device lacks the requested one.
    BWVideoModeChoice(const BWVideoAbilities &abilities, BWResolution requested);

    /// Best first, all of one size; empty if the device has nothing that we show.
    const std::vector<BWVideoMode> &candidates() const { return m_candidates; }

    /// For the log: what the candidate `taken` delivers, and which others would deliver another rate.
    QString reason(std::size_t taken) const;

private:
    std::vector<BWVideoMode> m_candidates;
};
