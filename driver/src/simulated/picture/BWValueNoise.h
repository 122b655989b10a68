// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdint>

/// Reproducible smooth noise.
namespace BWValueNoise {

inline uint32_t hash(int32_t x, int32_t y, uint32_t seed)
{
    uint32_t h = static_cast<uint32_t>(x) * 0x8da6b343u ^ static_cast<uint32_t>(y) * 0xd8163841u ^ seed * 0xcb1ab31fu;
    h ^= h >> 15;
    h *= 0x2c1b3c6du;
    h ^= h >> 12;
    h *= 0x297a2d39u;
    return h ^ (h >> 15);
}

/// From 0 to 1.
inline float random(int32_t x, int32_t y, uint32_t seed)
{
    return static_cast<float>(hash(x, y, seed) >> 8) * (1.0f / 16777216.0f);
}

inline float ease(float t)
{
    return t * t * t * (t * (t * 6 - 15) + 10);
}

/// From about -1 to 1, features about 1 wide. With a `period` it repeats after that many features.
inline float smooth(float x, float y, uint32_t seed, int32_t period = 0)
{
    const float fx = std::floor(x);
    const float fy = std::floor(y);
    const float dx = x - fx;
    const float dy = y - fy;
    const auto slope = [&](int32_t stepX, int32_t stepY) {
        int32_t ix = static_cast<int32_t>(fx) + stepX;
        int32_t iy = static_cast<int32_t>(fy) + stepY;
        if (period > 0) {
            ix %= period;
            iy %= period;
        }
        const uint32_t h = hash(ix, iy, seed);
        const float gx = static_cast<float>(h & 0xffff) * (2.0f / 65535) - 1;
        const float gy = static_cast<float>(h >> 16) * (2.0f / 65535) - 1;
        return gx * (dx - static_cast<float>(stepX)) + gy * (dy - static_cast<float>(stepY));
    };
    const float tx = ease(dx);
    return 1.7f * std::lerp(std::lerp(slope(0, 0), slope(1, 0), tx), std::lerp(slope(0, 1), slope(1, 1), tx), ease(dy));
}

/// From about -1 to 1: octaves of smooth noise, each twice as fine and half as strong as the one before.
inline float clouds(float x, float y, uint32_t seed, int octaves = 4)
{
    float sum = 0;
    float total = 0;
    float weight = 1;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += weight * smooth(x, y, seed + static_cast<uint32_t>(octave));
        total += weight;
        weight *= 0.5f;
        const float turned = 1.6f * x - 1.2f * y + 17.3f; // turned, lest the grid shows
        y = 1.2f * x + 1.6f * y - 9.7f;
        x = turned;
    }
    return 1.4f * sum / total;
}

} // namespace BWValueNoise

/// Marks a function with plain inner loops over many pixels: it is compiled once for every PC and once for those with
/// AVX2, and the better one is picked at start. Sanitizers do not get along with the picking.
#if defined(__x86_64__) && defined(__gnu_linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)   \
    && !defined(__clang__)
#define BW_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define BW_VECTOR_CLONES
#endif
