#include "simulated/picture/BWMovieSource.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr uint64_t longestGap = 250; // pictures; beyond that the movie just goes on

}

BWMovieSource::BWMovieSource(std::unique_ptr<BWMovieReader> reader) : m_reader(std::move(reader)) { }

void BWMovieSource::setResolution(BWResolution resolution)
{
    BWPlanesSource::setResolution(resolution);
    m_planesStale = true;
}

std::optional<BWPixelFormat> BWMovieSource::nativeFormat() const
{
    return m_reader->size() == resolution() ? m_reader->nativeFormat() : std::nullopt;
}

BWColorMatrix BWMovieSource::matrix() const
{
    return nativeFormat() == BWPixelFormat::YUYV ? m_reader->matrix() : BWColorMatrix::BT601;
}

BWColorRange BWMovieSource::range() const
{
    return nativeFormat() == BWPixelFormat::YUYV ? m_reader->range() : BWColorRange::Limited;
}

bool BWMovieSource::passesOn(BWPixelFormat format) const
{
    return nativeFormat() == format && controls().isNeutral();
}

void BWMovieSource::stepTo(uint64_t index)
{
    if (!m_index) {
        m_index = index; // the reader stands at its first picture
        return;
    }
    const uint64_t before = *std::exchange(m_index, index);
    if (index == before)
        return;
    m_planesStale = true;
    if (index < before) {
        m_reader->rewind(); // the camera has started anew
        return;
    }
    for (uint64_t step = std::min(index - before, longestGap); step > 0; --step) {
        if (!m_reader->advance())
            break;
    }
}

void BWMovieSource::renderYUYV(uint64_t index, uint8_t *pixels, int stride)
{
    stepTo(index);
    if (!passesOn(BWPixelFormat::YUYV)) {
        BWPlanesSource::renderYUYV(index, pixels, stride);
        return;
    }
    const std::span<const uint8_t> packet = m_reader->packet();
    const std::size_t rowBytes = static_cast<std::size_t>(resolution().width()) * 2;
    for (int row = 0; row < resolution().height(); ++row) {
        std::memcpy(pixels + static_cast<std::ptrdiff_t>(row) * stride,
                    packet.data() + static_cast<std::size_t>(row) * rowBytes, rowBytes);
    }
}

void BWMovieSource::renderJPEG(uint64_t index, std::vector<uint8_t> &jpeg)
{
    stepTo(index);
    if (!passesOn(BWPixelFormat::MJPEG)) {
        BWPlanesSource::renderJPEG(index, jpeg);
        return;
    }
    const std::span<const uint8_t> packet = m_reader->packet();
    jpeg.assign(packet.begin(), packet.end());
}

BWPlanesSource::Scene BWMovieSource::scene(uint64_t, BWColorMatrix matrix)
{
    if (m_planesStale || matrix != m_planesMatrix) {
        m_planesStale = false;
        m_planesMatrix = matrix;
        ++m_revision;
        const bool decoded = m_reader->decode(resolution(), matrix, m_fresh);
        if (decoded) {
            std::swap(m_planes, m_fresh);
        } else if (m_planes.width() != resolution().width() || m_planes.height() != resolution().height()) {
            m_planes.resize(resolution().width(), resolution().height());
            m_planes.fill(0);
        }
    }
    return {&m_planes, m_revision};
}
