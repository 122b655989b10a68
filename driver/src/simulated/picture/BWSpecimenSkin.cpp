// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/picture/BWSpecimenSkin.h"

#include "simulated/picture/BWValueNoise.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr uint32_t specimenSeed = 4711;
constexpr float fieldStep = 1.0f / 64;
constexpr float overhang = 0.08f; // the cells reach further than the picture, for the warp
constexpr float specimenCellSize = 0.088f;
constexpr float fineSize = 0.027f;
constexpr float netSize = 0.027f;
constexpr float moleReach = -0.03f; // further out the mole leaves no trace

[[gnu::always_inline]] inline float step(float from, float to, float value)
{
    const float t = std::min(std::max((value - from) * (1 / (to - from)), 0.0f), 1.0f);
    return t * t * (3 - 2 * t);
}

[[gnu::always_inline]] inline float mix(float a, float b, float t)
{
    return a + (b - a) * t;
}

struct Colour {
    float r;
    float g;
    float b;
};

[[gnu::always_inline]] inline Colour mix(Colour a, Colour b, float t)
{
    return {mix(a.r, b.r, t), mix(a.g, b.g, t), mix(a.b, b.b, t)};
}

[[gnu::always_inline]] inline Colour scaled(Colour c, float r, float g, float b)
{
    return {c.r * r, c.g * g, c.b * b};
}

[[gnu::always_inline]] inline Colour scaled(Colour c, float factor)
{
    return scaled(c, factor, factor, factor);
}

[[gnu::always_inline]] inline uint32_t packed(Colour c)
{
    const auto channel = [](float value) __attribute__((always_inline))
    {
        return static_cast<uint32_t>(static_cast<int>(std::min(std::max(value, 0.0f), 255.0f)));
    };
    return 0xff000000u | channel(c.r) << 16 | channel(c.g) << 8 | channel(c.b);
}

constexpr Colour paleSkin{236, 190, 165};
constexpr Colour rosySkin{224, 158, 138};
constexpr Colour moleBrown{178, 118, 84};
constexpr Colour moleDark{84, 48, 36};
constexpr Colour moleVeil{112, 100, 110};

} // namespace

BWCellPattern::BWCellPattern(float left, float top, float right, float bottom, float cellSize, uint32_t seed)
    : m_left(left),
      m_top(top),
      m_scale(1 / cellSize),
      m_columns(static_cast<int>((right - left) * m_scale) + 1),
      m_rows(static_cast<int>((bottom - top) * m_scale) + 1)
{
    m_seeds.reserve(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows));
    for (int row = 0; row < m_rows; ++row) {
        for (int column = 0; column < m_columns; ++column) {
            const float x = BWValueNoise::random(column, row, seed);
            const float y = BWValueNoise::random(column, row, seed + 1);
            const float tone = BWValueNoise::random(column, row, seed + 2);
            m_seeds.push_back({static_cast<float>(column) + 0.06f + 0.88f * x,
                               static_cast<float>(row) + 0.06f + 0.88f * y, tone * 2 - 1});
        }
    }
}

BW_VECTOR_CLONES void BWCellPattern::evaluate(const float *x, const float *y, float *wall, float *tone) const
{
    alignas(64) float px[run];
    alignas(64) float py[run];
    for (int i = 0; i < run; ++i) {
        px[i] = (x[i] - m_left) * m_scale;
        py[i] = (y[i] - m_top) * m_scale;
    }
    const auto [minX, maxX] = std::minmax_element(px, px + run);
    const auto [minY, maxY] = std::minmax_element(py, py + run);
    const int firstColumn = std::clamp(static_cast<int>(*minX) - 1, 0, m_columns - 1);
    const int lastColumn = std::clamp(static_cast<int>(*maxX) + 1, 0, m_columns - 1);
    const int firstRow = std::clamp(static_cast<int>(*minY) - 1, 0, m_rows - 1);
    const int lastRow = std::clamp(static_cast<int>(*maxY) + 1, 0, m_rows - 1);

    alignas(64) float nearest[run];
    alignas(64) float second[run];
    std::fill_n(nearest, run, 1e9f);
    std::fill_n(second, run, 1e9f);
    for (int row = firstRow; row <= lastRow; ++row) {
        const Seed *seeds = m_seeds.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns);
        for (int column = firstColumn; column <= lastColumn; ++column) {
            const Seed s = seeds[column];
            for (int i = 0; i < run; ++i) {
                const float dx = px[i] - s.x;
                const float dy = py[i] - s.y;
                const float distance = dx * dx + dy * dy;
                tone[i] = distance < nearest[i] ? s.tone : tone[i];
                second[i] = std::min(second[i], std::max(nearest[i], distance));
                nearest[i] = std::min(nearest[i], distance);
            }
        }
    }
    for (int i = 0; i < run; ++i)
        wall[i] = std::sqrt(second[i]) - std::sqrt(nearest[i]);
}

BWSpecimenSkin::BWSpecimenSkin(float halfWidth, float halfHeight, float scale)
    : m_left(-halfWidth - fieldStep),
      m_top(-halfHeight - fieldStep),
      m_scale(scale),
      m_columns(static_cast<int>(2 * halfWidth / fieldStep) + 4),
      m_rows(static_cast<int>(2 * halfHeight / fieldStep) + 4),
      m_cells(-halfWidth - overhang, -halfHeight - overhang, halfWidth + overhang, halfHeight + overhang,
              specimenCellSize, specimenSeed),
      m_fine(-halfWidth - overhang, -halfHeight - overhang, halfWidth + overhang, halfHeight + overhang, fineSize,
             specimenSeed + 10),
      m_net(-halfWidth - overhang, -halfHeight - overhang, halfWidth + overhang, halfHeight + overhang, netSize,
            specimenSeed + 20),
      m_grainSize(scale < 700 ? 128 : 256)
{
    m_samples.reserve(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows));
    for (int row = 0; row < m_rows; ++row) {
        for (int column = 0; column < m_columns; ++column) {
            m_samples.push_back(
                sampleAt(m_left + static_cast<float>(column) * fieldStep, m_top + static_cast<float>(row) * fieldStep));
        }
    }
    makeGrain();
}

BWSpecimenSkin::Sample BWSpecimenSkin::sampleAt(float x, float y) const
{
    using BWValueNoise::clouds;
    Sample sample;
    sample[WarpX] = 0.011f * clouds(x * 11, y * 11, specimenSeed + 30, 2);
    sample[WarpY] = 0.011f * clouds(x * 11, y * 11, specimenSeed + 40, 2);
    sample[Tone] = clouds(x * 2.2f, y * 2.2f, specimenSeed + 50, 3);
    sample[Redness] = clouds(x * 3.1f, y * 3.1f, specimenSeed + 60, 3);
    // How deep inside the mole: an uneven outline around a slanted oval.
    const float dx = x - 0.03f;
    const float dy = y + 0.015f;
    const float along = 0.93f * dx + 0.36f * dy;
    const float across = (-0.36f * dx + 0.93f * dy) * 1.25f;
    const float distance = std::sqrt(along * along + across * across);
    sample[Mole] = 0.285f + 0.055f * clouds(x * 5.5f, y * 5.5f, specimenSeed + 70, 3) - distance;
    sample[Blotch] = clouds(x * 8, y * 8, specimenSeed + 80, 3);
    const float veilX = x + 0.03f;
    const float veilY = y - 0.045f;
    sample[Veil] =
        0.085f + 0.06f * clouds(x * 9, y * 9, specimenSeed + 90, 3) - std::sqrt(veilX * veilX + veilY * veilY);
    sample[Freckle] = clouds(x * 10, y * 10, specimenSeed + 100, 2);
    return sample;
}

void BWSpecimenSkin::makeGrain()
{
    // Structures of a fifth of a per cent of the picture, but never finer than pixels can show.
    const auto size = static_cast<float>(m_grainSize);
    const int period = static_cast<int>(size / std::max(1.6f, 0.0032f * m_scale));
    m_grain.reserve(static_cast<std::size_t>(m_grainSize) * static_cast<std::size_t>(m_grainSize));
    for (int row = 0; row < m_grainSize; ++row) {
        for (int column = 0; column < m_grainSize; ++column) {
            const float x = static_cast<float>(column * period) / size;
            const float y = static_cast<float>(row * period) / size;
            const float white = BWValueNoise::random(column, row, specimenSeed + 111) * 2 - 1;
            m_grain.push_back(0.8f * BWValueNoise::smooth(x, y, specimenSeed + 110, period) + 0.2f * white);
        }
    }
}

void BWSpecimenSkin::interpolateRow(float y, std::vector<Sample> &row) const
{
    const float position = std::clamp((y - m_top) / fieldStep, 0.0f, static_cast<float>(m_rows) - 1.001f);
    const int first = static_cast<int>(position);
    const float t = position - static_cast<float>(first);
    const Sample *above = m_samples.data() + static_cast<std::size_t>(first) * static_cast<std::size_t>(m_columns);
    const Sample *below = above + m_columns;
    row.resize(static_cast<std::size_t>(m_columns));
    for (std::size_t i = 0; i < row.size(); ++i) {
        for (std::size_t field = 0; field < FieldCount; ++field)
            row[i][field] = mix(above[i][field], below[i][field], t);
    }
}

BW_VECTOR_CLONES void BWSpecimenSkin::gather(const std::vector<Sample> &row, float x, float y, Run &pixels) const
{
    const float pixel = 1 / m_scale;
    const float last = static_cast<float>(m_columns) - 1.001f;
    for (int i = 0; i < run; ++i) {
        const float px = x + static_cast<float>(i) * pixel;
        const float position = std::min(std::max((px - m_left) * (1 / fieldStep), 0.0f), last);
        const int first = static_cast<int>(position);
        const float t = position - static_cast<float>(first);
        const float *a = row[static_cast<std::size_t>(first)].data();
        alignas(64) float here[FieldCount];
        for (int field = 0; field < FieldCount; ++field)
            here[field] = mix(a[field], a[field + FieldCount], t);
        for (int field = 0; field < FieldCount; ++field)
            pixels.fields[field][i] = here[field];
        pixels.x[i] = px + here[WarpX];
        pixels.y[i] = y + here[WarpY];
    }
    m_cells.evaluate(pixels.x, pixels.y, pixels.cellWall, pixels.cellTone);
    m_fine.evaluate(pixels.x, pixels.y, pixels.fineWall, pixels.fineTone);
    if (*std::max_element(pixels.fields[Mole], pixels.fields[Mole] + run) > moleReach) {
        m_net.evaluate(pixels.x, pixels.y, pixels.netWall, pixels.netTone);
    } else {
        std::fill_n(pixels.netWall, run, 1.0f);
        std::fill_n(pixels.netTone, run, 0.0f);
    }
}

BW_VECTOR_CLONES void BWSpecimenSkin::raise(Run &pixels, const float *above, float *heights) const
{
    // The surface, lit from the upper left.
    const float slope = 0.006f * m_scale;
    for (int i = 0; i < run; ++i) {
        heights[i] = 0.24f * step(0, 0.36f, pixels.cellWall[i]) + 0.22f * step(0, 0.8f, pixels.cellWall[i])
            + 0.05f * step(0, 0.5f, pixels.fineWall[i]) + 0.008f * pixels.grain[i];
    }
    for (int i = 0; i < run; ++i) {
        const float lit = (2 * heights[i] - heights[i - 1] - above[i]) * slope;
        pixels.relief[i] = std::min(std::max(lit, -0.17f), 0.17f);
    }
}

BW_VECTOR_CLONES void BWSpecimenSkin::shade(const Run &pixels, uint32_t *out) const
{
    // Walls never get thinner than the pixels can show.
    const float cellEdge = std::max(0.15f, 2.0f / (specimenCellSize * m_scale));
    const float fineEdge = std::max(0.18f, 2.2f / (fineSize * m_scale));
    const float netEdge = std::max(0.46f, 2.4f / (netSize * m_scale));
    for (int i = 0; i < run; ++i) {
        const float mole = step(-0.015f, 0.035f, pixels.fields[Mole][i] + 0.010f * pixels.netTone[i]);
        const float core = step(0.0f, 0.20f, pixels.fields[Mole][i]);
        const float cell = step(0, cellEdge, pixels.cellWall[i]);
        const float dome = step(0, 0.75f, pixels.cellWall[i]);
        const float fine = step(0, fineEdge, pixels.fineWall[i]);
        const float net = 1 - step(0.04f, netEdge, pixels.netWall[i]);
        const float dot = step(0.42f, 0.72f, pixels.netWall[i]) * step(0.45f, 0.65f, pixels.netTone[i]);

        Colour skin = mix(paleSkin, rosySkin, step(-0.6f, 0.7f, pixels.fields[Redness][i]));
        const float tone =
            1 + 0.05f * pixels.fields[Tone][i] + 0.05f * pixels.cellTone[i] + 0.03f * dome + 0.016f * pixels.grain[i];
        const float fineFade = step(-0.5f, 0.5f, pixels.fields[Freckle][i]);
        const float furrow = (1 - cell) * 0.66f + (1 - fine) * (0.05f + 0.14f * fineFade);
        skin = scaled(skin, tone);
        skin = scaled(skin, 1 - 0.34f * furrow, 1 - 0.50f * furrow, 1 - 0.55f * furrow);
        skin = mix(skin, scaled(moleBrown, tone), 0.30f * step(0.45f, 0.95f, pixels.fields[Freckle][i]));

        // Pigment: brown ground, a dark network, dots, dark blotches in the middle, a bluish veil.
        const float blotch = step(-0.25f, 0.55f, pixels.fields[Blotch][i]);
        Colour pigment = mix(moleBrown, moleDark, core * (0.16f + 0.44f * blotch));
        pigment = mix(pigment, moleDark, net * (0.70f - 0.15f * core));
        pigment = mix(pigment, moleDark, 0.75f * dot * core);
        pigment = mix(pigment, moleVeil, 0.42f * step(0, 0.08f, pixels.fields[Veil][i]));
        pigment = scaled(pigment, tone * (1 + 0.06f * pixels.netTone[i]) * (1 - 0.30f * furrow));
        const Colour colour = mix(skin, pigment, mole * (0.74f + 0.22f * core));

        const float light = 1 + pixels.relief[i] * (1 - 0.35f * mole);
        out[i] = packed(scaled(colour, light));
    }
}

void BWSpecimenSkin::draw(QImage &image) const
{
    const int width = image.width();
    const int height = image.height();
    const std::size_t padded = (static_cast<std::size_t>(width) + run - 1) / run * run;
    std::vector<Sample> fields;
    std::vector<float> heights(padded + 1, 0.5f); // one more on the left
    std::vector<float> above(padded + 1, 0.5f);
    std::vector<uint32_t> line(padded);
    Run pixels;
    for (int row = 0; row < height; ++row) {
        const float y = (static_cast<float>(row) - 0.5f * static_cast<float>(height)) / m_scale;
        interpolateRow(y, fields);
        const float *grain =
            &m_grain[static_cast<std::size_t>(row % m_grainSize) * static_cast<std::size_t>(m_grainSize)];
        for (std::size_t column = 0; column < padded; column += run) {
            const float x = (static_cast<float>(column) - 0.5f * static_cast<float>(width)) / m_scale;
            gather(fields, x, y, pixels);
            std::copy_n(grain + column % static_cast<std::size_t>(m_grainSize), run, pixels.grain);
            raise(pixels, &above[column + 1], &heights[column + 1]);
            shade(pixels, &line[column]);
        }
        std::copy_n(line.begin(), width, reinterpret_cast<uint32_t *>(image.scanLine(row)));
        heights[0] = heights[1];
        heights.swap(above);
    }
}
