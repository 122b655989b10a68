#pragma once

#include <cstdint>
#include <vector>

/// The noise of a sensor whose gain is high: new in every picture, the same for the same picture number.
class BWPictureNoise {
public:
    /// `strength` from 0 (none) to 1.
    void setStrength(double strength);
    bool isSilent() const { return m_tile.empty(); }

    /// Adds noise to one row of `size` values, a multiple of 32, told apart by picture, row and plane.
    void add(uint8_t *values, int size, uint64_t picture, int row, int plane) const;

private:
    double m_strength = 0;
    std::vector<int8_t> m_tile;
};
