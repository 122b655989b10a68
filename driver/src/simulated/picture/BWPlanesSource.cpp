#include "simulated/picture/BWPlanesSource.h"

#include "media/BWJpegCodec.h"

#include <algorithm>
#include <cstring>
#include <libyuv.h>

namespace {

constexpr int jpegQuality = 85;

}

void BWPlanesSource::setResolution(BWResolution resolution)
{
    m_resolution = resolution;
    m_tunerStale = true;
}

void BWPlanesSource::setControls(const BWPictureControls &controls)
{
    if (controls == m_controls)
        return;
    m_controls = controls;
    m_noise.setStrength(std::clamp(controls.gain, 0.0, 1.0));
    m_tunerStale = true;
}

const BWYuvPlanes &BWPlanesSource::tunedScene(uint64_t index, BWColorMatrix matrix, BWColorRange range)
{
    const Scene seen = scene(index, matrix);
    const bool sameTuning = !m_tunerStale && range == m_tunedRange;
    if (!sameTuning) {
        m_tuner.set(m_controls, range, m_resolution.height());
        m_tunerStale = false;
        m_tunedRange = range;
    }
    if (m_tuner.isNeutral())
        return *seen.planes;
    if (!sameTuning || seen.revision != m_tunedRevision || m_tuned.isEmpty()) {
        m_tuner.apply(*seen.planes, m_tuned);
        m_tunedRevision = seen.revision;
    }
    return m_tuned;
}

void BWPlanesSource::composeRow(const BWYuvPlanes &tuned, BWColorRange, int row, uint8_t *y, uint8_t *u, uint8_t *v)
{
    const auto width = static_cast<std::size_t>(tuned.width());
    const auto chromaWidth = static_cast<std::size_t>(tuned.chromaWidth());
    std::memcpy(y, tuned.y(row), width);
    std::memcpy(u, tuned.u(row), chromaWidth);
    std::memcpy(v, tuned.v(row), chromaWidth);
}

void BWPlanesSource::finishRow(const BWYuvPlanes &tuned, BWColorRange range, uint64_t index, int row, uint8_t *y,
                               uint8_t *u, uint8_t *v)
{
    composeRow(tuned, range, row, y, u, v);
    if (m_noise.isSilent())
        return;
    m_noise.add(y, m_frame.stride(), index, row, 0);
    m_noise.add(u, m_frame.chromaStride(), index, row, 1);
    m_noise.add(v, m_frame.chromaStride(), index, row, 2);
}

void BWPlanesSource::renderYUYV(uint64_t index, uint8_t *pixels, int stride)
{
    const BWColorRange frameRange = range();
    const BWYuvPlanes &tuned = tunedScene(index, matrix(), frameRange);
    m_frame.resize(m_resolution.width(), 1);
    for (int row = 0; row < m_resolution.height(); ++row) {
        finishRow(tuned, frameRange, index, row, m_frame.y(), m_frame.u(), m_frame.v());
        libyuv::I422ToYUY2(m_frame.y(), m_frame.stride(), m_frame.u(), m_frame.chromaStride(), m_frame.v(),
                           m_frame.chromaStride(), pixels + static_cast<std::ptrdiff_t>(row) * stride, stride,
                           m_resolution.width(), 1);
    }
}

void BWPlanesSource::renderJPEG(uint64_t index, std::vector<uint8_t> &jpeg)
{
    const BWYuvPlanes &tuned = tunedScene(index, BWColorMatrix::BT601, BWColorRange::Full);
    m_frame.resize(m_resolution.width(), m_resolution.height());
    for (int row = 0; row < m_resolution.height(); ++row)
        finishRow(tuned, BWColorRange::Full, index, row, m_frame.y(row), m_frame.u(row), m_frame.v(row));
    m_frame.padOddColumn();
    const BWJpegCodec::Bytes bytes = BWJpegCodec::compress(m_frame, jpegQuality);
    jpeg.assign(bytes.begin(), bytes.end());
}
