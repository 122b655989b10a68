#pragma once

#include "v4l2/device/BWVideoAbilities.h"

/// In which of its modes a device is to stream at a wished size.
///
/// Colour before grey, then the highest rate; at equal rates the format that costs least to show, raw before
/// compressed. So MJPEG is taken where the bus carries raw pictures only slowly.
class BWVideoModeChoice {
public:
    /// Takes the nearest size where the wished one is not there.
    BWVideoModeChoice(const BWVideoAbilities &abilities, BWResolution wished);

    /// The wished size, else the one nearest to it by area; not valid without any.
    static BWResolution nearest(const std::vector<BWResolution> &sizes, BWResolution wished);

    /// Best first, all of one size; empty where the device has nothing that we show.
    const std::vector<BWVideoMode> &candidates() const { return m_candidates; }

    /// For the log: what candidate `taken` gives, and which others would give another rate.
    QString reason(std::size_t taken) const;

private:
    std::vector<BWVideoMode> m_candidates;
};
