// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <QImage>
#include <vector>

/// A plane covered with irregular cells: for every place the distance from the wall of its cell and the cell's own
/// random tone. Made for whole runs of neighbouring places at once.
class BWCellPattern {
public:
    /// Neighbouring places that are evaluated together.
    static constexpr int run = 16;

    /// Cells about `cellSize` wide that cover the rectangle.
    BWCellPattern(float left, float top, float right, float bottom, float cellSize, uint32_t seed);

    /// `wall` becomes 0 on a wall and about 0.5 to 1 in the middle of a cell, `tone` -1 to 1.
    void evaluate(const float *x, const float *y, float *wall, float *tone) const;

private:
    struct Seed {
        float x;
        float y;
        float tone;
    };

    float m_left;
    float m_top;
    float m_scale;
    int m_columns;
    int m_rows;
    std::vector<Seed> m_seeds;
};

/// Skin with a pigmented mole, as a dermatoscope shows it. Places are given in picture heights from the middle of the
/// picture, so that every resolution shows the same skin, only finer.
class BWSpecimenSkin {
public:
    /// `halfWidth` and `halfHeight` bound what will be drawn; `scale` is the number of pixels per picture height.
    BWSpecimenSkin(float halfWidth, float halfHeight, float scale);

    /// Fills the image (32 bits per pixel), whose middle is the middle of the specimen.
    void draw(QImage &image) const;

private:
    static constexpr int run = BWCellPattern::run;

    /// What varies slowly: kept on a coarse grid and interpolated.
    enum Field { WarpX, WarpY, Tone, Redness, Mole, Blotch, Veil, Freckle, FieldCount };
    using Sample = std::array<float, FieldCount>;

    /// What is known of a run of pixels.
    struct Run {
        alignas(64) float fields[FieldCount][run];
        alignas(64) float x[run];
        alignas(64) float y[run];
        alignas(64) float cellWall[run];
        alignas(64) float cellTone[run];
        alignas(64) float fineWall[run];
        alignas(64) float fineTone[run];
        alignas(64) float netWall[run];
        alignas(64) float netTone[run];
        alignas(64) float relief[run]; ///< of the lit surface, about 0
        alignas(64) float grain[run]; ///< of the finest structures, -1 to 1
    };

    Sample sampleAt(float x, float y) const;
    void interpolateRow(float y, std::vector<Sample> &row) const;
    void gather(const std::vector<Sample> &row, float x, float y, Run &pixels) const;
    void raise(Run &pixels, const float *above, float *heights) const;
    void shade(const Run &pixels, uint32_t *out) const;
    void makeGrain();

    float m_left;
    float m_top;
    float m_scale;
    int m_columns;
    int m_rows;
    std::vector<Sample> m_samples;
    BWCellPattern m_cells;
    BWCellPattern m_fine;
    BWCellPattern m_net;
    int m_grainSize;
    std::vector<float> m_grain; ///< a square that repeats
};
