#include "media/BWYuvPlanes.h"

#include <algorithm>
#include <cmath>
#include <libyuv.h>

namespace {

uint8_t clamped(int value)
{
    return static_cast<uint8_t>(std::min(std::max(value, 0), 255));
}

void stretch(uint8_t *values, int size, int zero, int newZero, double factor)
{
    const int scale = static_cast<int>(std::lround(factor * 1024));
    const int offset = newZero * 1024 + 512 - zero * scale;
    for (int i = 0; i < size; ++i)
        values[i] = clamped((values[i] * scale + offset) >> 10);
}

/// BT.709 to BT.601, both of full range: the same light described by other primaries of luma.
void convertMatrix(uint8_t *y, uint8_t *u, uint8_t *v, int pairs)
{
    constexpr double kr = 0.2126; // BT.709
    constexpr double kb = 0.0722;
    constexpr double kg = 1 - kr - kb;
    constexpr double jr = 0.299; // BT.601
    constexpr double jb = 0.114;
    constexpr double jg = 1 - jr - jb;
    // R = Y + 2(1-kr)V, B = Y + 2(1-kb)U, G = Y - (2 kb (1-kb) U + 2 kr (1-kr) V) / kg, put into the other equations.
    constexpr double yu = jb * 2 * (1 - kb) - jg * 2 * kb * (1 - kb) / kg;
    constexpr double yv = jr * 2 * (1 - kr) - jg * 2 * kr * (1 - kr) / kg;
    constexpr auto fixed = [](double value) { return static_cast<int>(value * 1024 + (value < 0 ? -0.5 : 0.5)); };
    constexpr int toYu = fixed(yu);
    constexpr int toYv = fixed(yv);
    constexpr int toUu = fixed((2 * (1 - kb) - yu) / (2 * (1 - jb)));
    constexpr int toUv = fixed(-yv / (2 * (1 - jb)));
    constexpr int toVu = fixed(-yu / (2 * (1 - jr)));
    constexpr int toVv = fixed((2 * (1 - kr) - yv) / (2 * (1 - jr)));
    for (std::ptrdiff_t i = 0; i < pairs; ++i) {
        const int cu = u[i] - 128;
        const int cv = v[i] - 128;
        const int shift = (toYu * cu + toYv * cv + 512) >> 10;
        y[2 * i] = clamped(y[2 * i] + shift);
        y[2 * i + 1] = clamped(y[2 * i + 1] + shift);
        u[i] = clamped(128 + ((toUu * cu + toUv * cv + 512) >> 10));
        v[i] = clamped(128 + ((toVu * cu + toVv * cv + 512) >> 10));
    }
}

} // namespace

void BWYuvPlanes::resize(int width, int height)
{
    m_width = width;
    m_height = height;
    m_stride = (width + 1 + block - 1) / block * block;
    const std::size_t size = static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height);
    m_y.resize(size);
    m_u.resize(size / 2);
    m_v.resize(size / 2);
}

void BWYuvPlanes::fill(uint8_t luma)
{
    std::fill(m_y.begin(), m_y.end(), luma);
    std::fill(m_u.begin(), m_u.end(), uint8_t(128));
    std::fill(m_v.begin(), m_v.end(), uint8_t(128));
}

void BWYuvPlanes::padOddColumn()
{
    if (m_width % 2 == 0)
        return;
    for (int row = 0; row < m_height; ++row)
        y(row)[m_width] = y(row)[m_width - 1];
}

bool BWYuvConvert::toJpegPlanes(const BWFrameInfo &info, BWYuvPlanes &planes)
{
    const int width = info.width;
    const int height = info.height;
    const auto &[first, second, third] = info.planes;
    planes.resize(width, height);
    switch (info.pixelFormat) {
    case BWPixelFormat::YUYV:
        libyuv::YUY2ToI422(first.data, first.stride, planes.y(), planes.stride(), planes.u(), planes.chromaStride(),
                           planes.v(), planes.chromaStride(), width, height);
        break;
    case BWPixelFormat::UYVY:
        libyuv::UYVYToI422(first.data, first.stride, planes.y(), planes.stride(), planes.u(), planes.chromaStride(),
                           planes.v(), planes.chromaStride(), width, height);
        break;
    case BWPixelFormat::YU12:
        libyuv::I420ToI422(first.data, first.stride, second.data, second.stride, third.data, third.stride, planes.y(),
                           planes.stride(), planes.u(), planes.chromaStride(), planes.v(), planes.chromaStride(), width,
                           height);
        break;
    case BWPixelFormat::NV12: {
        thread_local BWYuvPlanes small; // its chroma is only half as high
        small.resize(width, height);
        const int chromaHeight = (height + 1) / 2;
        libyuv::SplitUVPlane(second.data, second.stride, small.u(), small.chromaStride(), small.v(),
                             small.chromaStride(), small.chromaWidth(), chromaHeight);
        libyuv::I420ToI422(first.data, first.stride, small.u(), small.chromaStride(), small.v(), small.chromaStride(),
                           planes.y(), planes.stride(), planes.u(), planes.chromaStride(), planes.v(),
                           planes.chromaStride(), width, height);
        break;
    }
    case BWPixelFormat::GREY:
        libyuv::CopyPlane(first.data, first.stride, planes.y(), planes.stride(), width, height);
        planes.padOddColumn();
        if (info.range == BWColorRange::Limited)
            stretch(planes.y(), planes.stride() * height, 16, 0, 255.0 / 219);
        return true;
    default:
        return false;
    }
    planes.padOddColumn();
    toJpegColours(planes, info.matrix, info.range);
    return true;
}

void BWYuvConvert::toJpegColours(BWYuvPlanes &planes, BWColorMatrix matrix, BWColorRange range)
{
    const int size = planes.stride() * planes.height();
    if (range == BWColorRange::Limited) {
        stretch(planes.y(), size, 16, 0, 255.0 / 219);
        stretch(planes.u(), size / 2, 128, 128, 255.0 / 224);
        stretch(planes.v(), size / 2, 128, 128, 255.0 / 224);
    }
    if (matrix == BWColorMatrix::BT709)
        convertMatrix(planes.y(), planes.u(), planes.v(), size / 2);
}
