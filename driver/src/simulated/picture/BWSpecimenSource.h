// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "simulated/picture/BWPictureSource.h"

#include <cstdint>
#include <memory>
#include <vector>

/// The drawn specimen at one resolution, with some more around it for the drift. Full range, BT.601. Immutable.
struct BWSpecimenTexture {
    BWYuvPlanes planes;
    int margin = 0; ///< columns and rows on each side beyond the picture

    /// Draws it, or shares the one that another source holds already. Any thread.
    static std::shared_ptr<const BWSpecimenTexture> forResolution(BWResolution resolution);
};

/// The drawn specimen under a lens: it drifts slowly along a closed path, while the lens' vignette stays in place.
class BWSpecimenSource final : public BWPictureSource {
public:
    void setResolution(BWResolution resolution) override;

protected:
    Scene scene(uint64_t index, BWColorMatrix matrix) override;
    void composeRow(const BWYuvPlanes &tuned, BWColorRange range, int row, uint8_t *y, uint8_t *u, uint8_t *v) override;

private:
    /// A place in the texture in 1/256 of a pixel.
    struct Offset {
        int x = 0;
        int y = 0;
    };

    void makeVignette();
    void sample(const uint8_t *plane, int stride, int x, int y, int width, uint8_t *out);

    std::shared_ptr<const BWSpecimenTexture> m_texture;
    uint64_t m_revision = 0;
    Offset m_offset;
    BWYuvPlanes m_vignette; ///< how much light each pixel gets, upper half only: the lower mirrors it
    std::vector<uint8_t> m_black;
    std::vector<uint8_t> m_grey;
    std::vector<uint8_t> m_scratch;
};
