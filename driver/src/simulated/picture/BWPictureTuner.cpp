// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/picture/BWPictureTuner.h"

#include "simulated/picture/BWValueNoise.h"

#include <algorithm>
#include <cmath>
#include <libyuv.h>

namespace {

constexpr int32_t one = 4096;

int32_t fixed(double value)
{
    return static_cast<int32_t>(std::lround(value * one));
}

/// What exposure, gain, backlight compensation and gamma make of an amount of light; above 1 the sensor is saturated.
double exposed(double light, const BWPictureControls &controls)
{
    double value = light * std::exp2(1.6 * controls.exposure + 1.2 * controls.gain);
    const double shade = std::max(0.0, 1 - value);
    value += controls.backlight * (0.05 * std::pow(shade, 4) + 1.1 * value * std::pow(shade, 3));
    return std::pow(std::max(value, 0.0), std::exp2(-controls.gamma));
}

/// The plane through `small` and back: a blur of about `radius` pixels at little cost.
void blur(const uint8_t *plane, int stride, int width, int height, double radius, std::vector<uint8_t> &small,
          uint8_t *out)
{
    const int smallWidth = std::max(1, static_cast<int>(std::lround(width / radius)));
    const int smallHeight = std::max(1, static_cast<int>(std::lround(height / radius)));
    small.resize(static_cast<std::size_t>(smallWidth) * static_cast<std::size_t>(smallHeight));
    libyuv::ScalePlane(plane, stride, width, height, small.data(), smallWidth, smallWidth, smallHeight,
                       libyuv::kFilterBox);
    libyuv::ScalePlane(small.data(), smallWidth, smallWidth, smallHeight, out, stride, width, height,
                       libyuv::kFilterBilinear);
}

/// plane + (plane - blurred) * amount / 64, for whole blocks.
BW_VECTOR_CLONES void addDetail(uint8_t *plane, const uint8_t *blurred, std::size_t size, int amount)
{
    const auto factor = static_cast<int16_t>(amount);
    for (std::size_t i = 0; i < size; ++i) {
        const auto detail = static_cast<int16_t>(plane[i] - blurred[i]);
        const auto change = static_cast<int16_t>(static_cast<int16_t>(detail * factor) >> 6);
        const auto value = static_cast<int16_t>(plane[i] + change);
        plane[i] = static_cast<uint8_t>(std::min<int16_t>(std::max<int16_t>(value, 0), 255));
    }
}

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

BWPictureTuner::BWPictureTuner()
{
    makeTables();
}

void BWPictureTuner::set(const BWPictureControls &controls, BWColorRange range, int scale)
{
    m_controls = controls;
    m_range = range;
    m_scale = scale;
    m_neutral = controls.isNeutral() && range == BWColorRange::Full;
    makeTables();
}

void BWPictureTuner::makeTables()
{
    const bool limited = m_range == BWColorRange::Limited;
    const double lumaScale = limited ? 219 : 255;
    const double lumaZero = limited ? 16 : 0;
    const double chromaScale = limited ? 224.0 / 255 : 1;
    const BWPictureControls &c = m_controls;
    const double steepness = c.contrast >= 0 ? 1 + 1.4 * c.contrast : 1 + 0.85 * c.contrast;
    const double colourfulness = c.saturation >= 0 ? 1 + 1.6 * c.saturation : 1 + c.saturation;
    for (int i = 0; i < 256; ++i) {
        const double light = i / 255.0;
        const double value = exposed(light, c);
        const double shown = std::clamp((value - 0.5) * steepness + 0.5 + 0.35 * c.brightness, 0.0, 1.0);
        const double burnt = std::clamp(1.6 * (value - 1), 0.0, 1.0); // where the light is too much, colours fade
        const double ratio = std::min(4.0, std::max(value, 0.004) / std::max(light, 0.004));
        const auto index = static_cast<std::size_t>(i);
        m_luma[index] = static_cast<uint8_t>(std::lround(lumaZero + lumaScale * shown));
        m_chroma[index].scale = fixed(chromaScale * colourfulness * ratio * (1 - burnt));
        m_chroma[index].u = fixed(chromaScale * 255 * shown * -0.17 * c.whiteBalance);
        m_chroma[index].v = fixed(chromaScale * 255 * shown * 0.20 * c.whiteBalance);
    }
    constexpr double quarterTurn = 1.5707963267948966;
    m_cosine = fixed(std::cos(c.hue * quarterTurn));
    m_sine = fixed(std::sin(c.hue * quarterTurn));
}

void BWPictureTuner::apply(const BWYuvPlanes &in, BWYuvPlanes &out)
{
    if (m_neutral)
        out = in;
    else
        applyTables(in, out);
    if (m_controls.sharpness < 0)
        soften(out);
    else if (m_controls.sharpness > 0)
        sharpen(out);
}

void BWPictureTuner::applyTables(const BWYuvPlanes &in, BWYuvPlanes &out) const
{
    out.resize(in.width(), in.height());
    const auto clamped = [](int32_t value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); };
    const int pairs = in.chromaStride();
    for (int row = 0; row < in.height(); ++row) {
        const uint8_t *y = in.y(row);
        const uint8_t *u = in.u(row);
        const uint8_t *v = in.v(row);
        uint8_t *outY = out.y(row);
        uint8_t *outU = out.u(row);
        uint8_t *outV = out.v(row);
        for (std::ptrdiff_t i = 0; i < pairs; ++i) {
            const ChromaStep &chroma = m_chroma[static_cast<std::size_t>((y[2 * i] + y[2 * i + 1]) / 2)];
            outY[2 * i] = m_luma[y[2 * i]];
            outY[2 * i + 1] = m_luma[y[2 * i + 1]];
            const int32_t cu = u[i] - 128;
            const int32_t cv = v[i] - 128;
            const int32_t turnedU = (cu * m_cosine - cv * m_sine) >> 8; // in 1/16
            const int32_t turnedV = (cu * m_sine + cv * m_cosine) >> 8;
            outU[i] = clamped(128 + ((((turnedU * chroma.scale) >> 4) + chroma.u + one / 2) >> 12));
            outV[i] = clamped(128 + ((((turnedV * chroma.scale) >> 4) + chroma.v + one / 2) >> 12));
        }
    }
}

void BWPictureTuner::soften(BWYuvPlanes &planes)
{
    // At first the blurred picture shines through, then the blur grows.
    const double strength = -m_controls.sharpness;
    const double unit = std::max(1.0, m_scale / 480.0);
    const double radius = unit * (2 + 4 * strength * strength);
    const int share = static_cast<int>(std::lround(255 * std::min(1.0, 2.5 * strength)));
    const auto soften = [&](uint8_t *plane, int stride, int width, double planeRadius) {
        m_blurred.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(planes.height()));
        blur(plane, stride, width, planes.height(), planeRadius, m_small, m_blurred.data());
        libyuv::InterpolatePlane(plane, stride, m_blurred.data(), stride, plane, stride, width, planes.height(), share);
    };
    soften(planes.y(), planes.stride(), planes.width(), radius);
    soften(planes.u(), planes.chromaStride(), planes.chromaWidth(), std::max(1.0, radius / 2));
    soften(planes.v(), planes.chromaStride(), planes.chromaWidth(), std::max(1.0, radius / 2));
}

void BWPictureTuner::sharpen(BWYuvPlanes &planes)
{
    const double unit = std::max(1.0, m_scale / 960.0);
    const std::size_t size = static_cast<std::size_t>(planes.stride()) * static_cast<std::size_t>(planes.height());
    m_blurred.resize(size);
    blur(planes.y(), planes.stride(), planes.width(), planes.height(), 2 * unit, m_small, m_blurred.data());
    addDetail(planes.y(), m_blurred.data(), size, static_cast<int>(std::lround(64 * 1.9 * m_controls.sharpness)));
}

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
