// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/BWYuvPlanes.h"

#include <array>
#include <cstdint>
#include <vector>

/// The camera controls as a picture sees them: each from -1 to 1, and 0 leaves the picture as it is.
struct BWPictureControls {
    double hue = 0;
    double contrast = 0;
    double saturation = 0;
    double brightness = 0;
    double sharpness = 0;
    double gamma = 0;
    double whiteBalance = 0; ///< -1 bluish, 1 reddish
    double gain = 0; ///< brighter, and noisier
    double backlight = 0; ///< lifts the shadows
    double exposure = 0;

    bool operator==(const BWPictureControls &) const = default;
    bool isNeutral() const { return *this == BWPictureControls{}; }
};

/// Applies the camera controls to a whole picture, except for the noise of a high gain, which changes from picture to
/// picture and is added later.
class BWPictureTuner {
public:
    /// Neutral, full range.
    BWPictureTuner();

    /// `scale` is the height of the picture in pixels: blur and sharpening grow with it.
    void set(const BWPictureControls &controls, BWColorRange range, int scale);

    /// Whether apply() would only copy.
    bool isNeutral() const { return m_neutral; }

    /// `in` is of full range, `out` of the range that was set. May be slow (tens of milliseconds at 5 megapixels).
    void apply(const BWYuvPlanes &in, BWYuvPlanes &out);

private:
    struct ChromaStep {
        int32_t scale; ///< of the distance from grey, in 1/4096
        int32_t u; ///< shift by the white balance, in 1/4096
        int32_t v;
    };

    void makeTables();
    void applyTables(const BWYuvPlanes &in, BWYuvPlanes &out) const;
    void soften(BWYuvPlanes &planes);
    void sharpen(BWYuvPlanes &planes);

    BWPictureControls m_controls;
    BWColorRange m_range = BWColorRange::Full;
    int m_scale = 1;
    bool m_neutral = true;
    std::array<uint8_t, 256> m_luma{};
    std::array<ChromaStep, 256> m_chroma{};
    int32_t m_cosine = 0;
    int32_t m_sine = 0;
    std::vector<uint8_t> m_small;
    std::vector<uint8_t> m_blurred;
};

/// The noise of a sensor whose gain is high: new in every picture, the same for the same picture number.
class BWPictureNoise {
public:
    /// `strength` from 0 (none) to 1.
    void setStrength(double strength);
    bool isSilent() const { return m_tile.empty(); }

    /// Adds noise to one row of `size` values, a multiple of 32; it differs by picture, row and plane.
    void add(uint8_t *values, int size, uint64_t picture, int row, int plane) const;

private:
    double m_strength = 0;
    std::vector<int8_t> m_tile;
};
