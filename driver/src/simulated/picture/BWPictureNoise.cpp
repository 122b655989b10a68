#include "simulated/picture/BWPictureNoise.h"

#include "simulated/picture/BWValueNoise.h"
#include "simulated/picture/BWVectorClones.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int tileSize = 1 << 15;
constexpr int tileRun = 4096; // longest piece taken at once

BW_VECTOR_CLONES void addSaturated(uint8_t *values, const int8_t *noise, int size)
{
    for (int i = 0; i < size; ++i) {
        const auto sum = static_cast<int16_t>(values[i] + noise[i]);
        values[i] = static_cast<uint8_t>(std::min<int16_t>(std::max<int16_t>(sum, 0), 255));
    }
}

} // namespace

void BWPictureNoise::setStrength(double strength)
{
    if (strength == m_strength)
        return;
    m_strength = strength;
    m_tile.clear();
    if (strength <= 0)
        return;
    m_tile.resize(tileSize + tileRun);
    for (std::size_t i = 0; i < m_tile.size(); ++i) {
        float sum = -2; // four even numbers add up to a bell curve
        for (int part = 0; part < 4; ++part)
            sum += BWValueNoise::random(static_cast<int32_t>(i), part, 31);
        m_tile[i] = static_cast<int8_t>(std::clamp(std::lround(static_cast<double>(sum) * 28 * strength), -127L, 127L));
    }
}

void BWPictureNoise::add(uint8_t *values, int size, uint64_t picture, int row, int plane) const
{
    const auto number = static_cast<int32_t>(picture * 3 + static_cast<uint64_t>(plane));
    for (int done = 0; done < size; done += tileRun) {
        const uint32_t offset = BWValueNoise::hash(number, row, static_cast<uint32_t>(done)) % tileSize;
        addSaturated(values + done, m_tile.data() + offset, std::min(tileRun, size - done));
    }
}
