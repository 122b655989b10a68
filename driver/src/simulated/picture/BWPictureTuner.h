#pragma once

#include "media/BWYuvPlanes.h"
#include "simulated/BWPictureSource.h"

#include <array>
#include <cstdint>

/// Applies the camera controls to a whole picture. Everything but the noise of a high gain, which changes from picture
/// to picture and is added later.
class BWPictureTuner {
public:
    /// Neutral, full range.
    BWPictureTuner();

    /// `scale` is the height in pixels of what a picture height is to the controls: blur and sharpening grow with it.
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
