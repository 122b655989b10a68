// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWVideoFormat.h"

#include <algorithm>

namespace {

struct Format {
    uint32_t fourcc;
    BWPixelFormat pixelFormat;
};

constexpr std::array formats{
    Format{V4L2_PIX_FMT_YUYV, BWPixelFormat::YUYV},   Format{V4L2_PIX_FMT_UYVY, BWPixelFormat::UYVY},
    Format{V4L2_PIX_FMT_NV12, BWPixelFormat::NV12},   Format{V4L2_PIX_FMT_YUV420, BWPixelFormat::YU12},
    Format{V4L2_PIX_FMT_GREY, BWPixelFormat::GREY},   Format{V4L2_PIX_FMT_RGB24, BWPixelFormat::RGB24},
    Format{V4L2_PIX_FMT_BGR24, BWPixelFormat::BGR24}, Format{V4L2_PIX_FMT_MJPEG, BWPixelFormat::MJPEG},
    Format{V4L2_PIX_FMT_JPEG, BWPixelFormat::MJPEG},
};

} // namespace

BWPixelFormat BWVideoFormat::pixelFormat(uint32_t fourcc)
{
    const auto found = std::find_if(formats.begin(), formats.end(),
                                    [fourcc](const Format &format) { return format.fourcc == fourcc; });
    return found == formats.end() ? BWPixelFormat::None : found->pixelFormat;
}

QString BWVideoFormat::name(uint32_t fourcc)
{
    if (pixelFormat(fourcc) == BWPixelFormat::MJPEG)
        return QStringLiteral("MJPEG");
    QString name;
    for (int shift = 0; shift < 32; shift += 8)
        name += QLatin1Char(static_cast<char>(fourcc >> shift & 0x7f));
    return name.trimmed();
}

BWVideoFormat::BWVideoFormat(const v4l2_pix_format &format)
{
    m_frame.pixelFormat = pixelFormat(format.pixelformat);
    m_frame.width = static_cast<int>(format.width);
    m_frame.height = static_cast<int>(format.height);
    const int stride = static_cast<int>(format.bytesperline);
    const bool hasChromaPlanes = m_frame.pixelFormat == BWPixelFormat::YU12;
    const std::array<BWPlaneSize, 3> sizes = m_frame.planeSizes();
    for (std::size_t i = 0; i < sizes.size() && sizes[i].rows > 0; ++i)
        addPlane(i, hasChromaPlanes && i > 0 ? stride / 2 : stride, sizes[i].rows, sizes[i].rowBytes);
    setColours(format);
}

BWFrameInfo BWVideoFormat::frame(const uint8_t *data, std::size_t bytesUsed) const
{
    BWFrameInfo frame = m_frame;
    if (frame.pixelFormat == BWPixelFormat::MJPEG)
        frame.planes[0].size = bytesUsed;
    for (std::size_t i = 0; i < frame.planes.size(); ++i) {
        BWPlane &plane = frame.planes[i];
        if (plane.size == 0 || m_offsets[i] >= bytesUsed) {
            plane = {};
            continue;
        }
        plane.data = data + m_offsets[i];
        plane.size = std::min(plane.size, bytesUsed - m_offsets[i]);
    }
    return frame;
}

void BWVideoFormat::addPlane(std::size_t plane, int stride, int rows, int bytesPerRow)
{
    // A driver that does not know its stride reports 0.
    stride = std::max(stride, bytesPerRow);
    const std::size_t size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(rows);
    m_offsets[plane] = m_end;
    m_frame.planes[plane].stride = stride;
    m_frame.planes[plane].size = size;
    m_end += size;
    m_leastSize = m_end - static_cast<std::size_t>(stride - bytesPerRow);
}

void BWVideoFormat::setColours(const v4l2_pix_format &format)
{
    const BWPixelFormat pixels = m_frame.pixelFormat;
    if (pixels == BWPixelFormat::MJPEG) {
        // JPEG has its own colour rule, whatever the device reports.
        m_frame.matrix = BWColorMatrix::BT601;
        m_frame.range = BWColorRange::Full;
        return;
    }
    const bool rgb = pixels == BWPixelFormat::RGB24 || pixels == BWPixelFormat::BGR24;
    const uint32_t space = format.colorspace == V4L2_COLORSPACE_DEFAULT
        ? static_cast<uint32_t>(V4L2_MAP_COLORSPACE_DEFAULT(false, false))
        : format.colorspace;
    const uint32_t encoding = format.ycbcr_enc == V4L2_YCBCR_ENC_DEFAULT
        ? static_cast<uint32_t>(V4L2_MAP_YCBCR_ENC_DEFAULT(space))
        : format.ycbcr_enc;
    const uint32_t range = format.quantization == V4L2_QUANTIZATION_DEFAULT
        ? static_cast<uint32_t>(V4L2_MAP_QUANTIZATION_DEFAULT(rgb, space, encoding))
        : format.quantization;
    const bool like601 = encoding == V4L2_YCBCR_ENC_601 || encoding == V4L2_YCBCR_ENC_XV601;
    m_frame.matrix = like601 ? BWColorMatrix::BT601 : BWColorMatrix::BT709;
    m_frame.range = range == V4L2_QUANTIZATION_FULL_RANGE ? BWColorRange::Full : BWColorRange::Limited;
}
