#pragma once

#include <cstdint>
#include <vector>

/// A plane covered with irregular cells: for every place the distance from the wall of its cell and the cell's own
/// random tone. Made for whole runs of neighbouring places at once.
class BWCellPattern {
public:
    /// Places evaluated together; they have to be neighbours.
    static constexpr int run = 16;

    /// Cells about `cellSize` wide over the rectangle; outside of it there are none.
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
