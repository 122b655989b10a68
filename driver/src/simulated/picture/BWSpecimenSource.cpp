#include "simulated/picture/BWSpecimenSource.h"

#include "simulated/picture/BWValueNoise.h"
#include "simulated/picture/BWVectorClones.h"

#include <algorithm>
#include <cmath>
#include <libyuv.h>

namespace {

constexpr double amplitude = 0.048; // of the drift, in picture heights
constexpr uint64_t period = 900; // pictures until it is back
constexpr uint8_t limitedBlack = 16;

BW_VECTOR_CLONES void vignetteRow(float y, float scale, int width, int row, uint8_t *light)
{
    const float middle = 0.5f * static_cast<float>(width - 1);
    for (int column = 0; column < width; ++column) {
        const float x = (static_cast<float>(column) - middle) * scale;
        const float distance = x * x + y * y; // squared, 1 in the corners
        const float share = 1 - 0.13f * distance - 0.36f * distance * distance * distance;
        const float dither = static_cast<float>(BWValueNoise::hash(column, row, 5) >> 16) * (1.0f / 65536);
        light[column] = static_cast<uint8_t>(static_cast<int>(std::min(255.0f, 254.5f * share + dither)));
    }
}

} // namespace

void BWSpecimenSource::setResolution(BWResolution resolution)
{
    if (resolution == this->resolution())
        return;
    BWPlanesSource::setResolution(resolution);
    m_texture = BWSpecimenTexture::forResolution(resolution);
    ++m_revision;
    makeVignette();
    m_scratch.resize(static_cast<std::size_t>(m_vignette.stride()) + 2);
    m_grey.assign(static_cast<std::size_t>(m_vignette.chromaStride()), 128);
}

void BWSpecimenSource::makeVignette()
{
    const int width = resolution().width();
    const int height = resolution().height();
    const auto toCorner = static_cast<float>(2 / std::hypot(width, height));
    m_vignette.resize(width, (height + 1) / 2);
    for (int row = 0; row < m_vignette.height(); ++row) {
        const float y = (static_cast<float>(row) - 0.5f * static_cast<float>(height - 1)) * toCorner;
        vignetteRow(y, toCorner, width, row, m_vignette.y(row));
        vignetteRow(y, toCorner * 2, m_vignette.chromaWidth(), row, m_vignette.u(row));
    }
}

BWPlanesSource::Scene BWSpecimenSource::scene(uint64_t index, BWColorMatrix)
{
    constexpr double turn = 6.283185307179586;
    const double t = turn * static_cast<double>(index % period) / static_cast<double>(period);
    const double reach = 256 * amplitude * resolution().height();
    const int margin = 256 * m_texture->margin;
    m_offset.x = margin + static_cast<int>(std::lround(reach * (0.8 * std::sin(t) + 0.2 * std::sin(2 * t + 0.7))));
    m_offset.y = margin + static_cast<int>(std::lround(reach * (0.7 * std::cos(t) + 0.3 * std::sin(3 * t + 0.4))));
    return {&m_texture->planes, m_revision};
}

void BWSpecimenSource::sample(const uint8_t *plane, int stride, int x, int y, int width, uint8_t *out)
{
    const uint8_t *from = plane + static_cast<std::ptrdiff_t>(y >> 8) * stride + (x >> 8);
    libyuv::InterpolatePlane(from, 0, from + stride, 0, m_scratch.data(), 0, width + 1, 1, y & 255);
    libyuv::InterpolatePlane(m_scratch.data(), 0, m_scratch.data() + 1, 0, out, 0, width, 1, x & 255);
}

void BWSpecimenSource::composeRow(const BWYuvPlanes &tuned, BWColorRange range, int row, uint8_t *y, uint8_t *u,
                                  uint8_t *v)
{
    const int width = resolution().width();
    const int chromaWidth = (width + 1) / 2;
    const int top = m_offset.y + row * 256;
    m_black.assign(static_cast<std::size_t>(width), range == BWColorRange::Limited ? limitedBlack : uint8_t(0));

    const int mirrored = std::min(row, resolution().height() - 1 - row);
    const uint8_t *light = m_vignette.y(mirrored);
    const uint8_t *chromaLight = m_vignette.u(mirrored);
    sample(tuned.y(), tuned.stride(), m_offset.x, top, width, y);
    libyuv::BlendPlane(y, 0, m_black.data(), 0, light, 0, y, 0, width, 1);
    for (auto [plane, out] : {std::pair{tuned.u(), u}, std::pair{tuned.v(), v}}) {
        sample(plane, tuned.chromaStride(), m_offset.x / 2, top, chromaWidth, out);
        libyuv::BlendPlane(out, 0, m_grey.data(), 0, chromaLight, 0, out, 0, chromaWidth, 1);
    }
}
