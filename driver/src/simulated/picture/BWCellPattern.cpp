#include "simulated/picture/BWCellPattern.h"

#include "simulated/picture/BWValueNoise.h"
#include "simulated/picture/BWVectorClones.h"

#include <algorithm>
#include <cmath>

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
        const Seed *seed = m_seeds.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns);
        for (int column = firstColumn; column <= lastColumn; ++column) {
            const Seed s = seed[column];
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
