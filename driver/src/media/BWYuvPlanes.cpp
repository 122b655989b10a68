// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/BWYuvPlanes.h"

#include <algorithm>
#include <libyuv.h>

namespace {

uint8_t clamped(int value)
{
    return static_cast<uint8_t>(std::min(std::max(value, 0), 255));
}

/// How values of limited range become those of full range: value + ((value * scale + round) >> 10) - less.
struct Stretch {
    uint8_t least;
    uint8_t most;
    uint16_t scale; ///< the products must fit 16 bits, so that SIMD computes many at once
    uint16_t round; ///< less than half where `most` would become 256 otherwise
    uint8_t less;
};
constexpr Stretch lumaStretch{16, 235, 168, 891, 19}; // 255 / 219
constexpr Stretch chromaStretch{16, 240, 142, 700, 18}; // 255 / 224

[[gnu::always_inline]] inline uint8_t stretched(uint8_t number, const Stretch &by)
{
    const uint8_t raised = number < by.least ? by.least : number;
    const uint8_t value = raised > by.most ? by.most : raised;
    const auto more = static_cast<uint16_t>(static_cast<uint16_t>(value * by.scale + by.round) >> 10);
    return static_cast<uint8_t>(value + more - by.less);
}

[[gnu::always_inline]] inline void stretchEach(uint8_t *values, int size, const Stretch by)
{
    for (int i = 0; i < size; ++i)
        values[i] = stretched(values[i], by);
}

/// Of values that take turns, as luma and chroma do in a packed row.
[[gnu::always_inline]] inline void stretchPairs(const uint8_t *__restrict from, uint8_t *__restrict to, int pairs,
                                                const Stretch first, const Stretch second)
{
    for (std::ptrdiff_t i = 0; i < pairs; ++i) {
        to[2 * i] = stretched(from[2 * i], first);
        to[2 * i + 1] = stretched(from[2 * i + 1], second);
    }
}

#ifdef __x86_64__
template <auto loop, typename... Values>
[[gnu::target("avx2")]] void runByAvx2(Values... values)
{
    loop(values...);
}
#endif

/// Runs one of the loops above with the widest registers that this processor has.
template <auto loop, typename... Values>
void run(Values... values)
{
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx2")) {
        runByAvx2<loop>(values...);
        return;
    }
#endif
    loop(values...);
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

/// A packed format: what takes it apart, and how its bytes at even and odd places are converted.
struct Packed {
    decltype(&libyuv::YUY2ToI422) unpack;
    Stretch even;
    Stretch odd;
};
constexpr Packed yuyv{&libyuv::YUY2ToI422, lumaStretch, chromaStretch};
constexpr Packed uyvy{&libyuv::UYVYToI422, chromaStretch, lumaStretch};

/// Row by row: a row comes from memory once, and the work on it overlaps with the wait for the next one.
void packedToJpegPlanes(const BWFrameInfo &info, const Packed &format, BWYuvPlanes &planes)
{
    const BWPlane &plane = info.planes[0];
    const int pairs = planes.chromaWidth() * 2;
    thread_local std::vector<uint8_t> full;
    full.resize(static_cast<std::size_t>(pairs) * 2);
    uint8_t *const stretchedRow = full.data(); // looked up once: in a library that costs a call
    for (int row = 0; row < info.height; ++row) {
        const uint8_t *from = plane.data + static_cast<std::ptrdiff_t>(row) * plane.stride;
        if (info.range == BWColorRange::Limited) {
            run<stretchPairs>(from, stretchedRow, pairs, format.even, format.odd);
            from = stretchedRow;
        }
        format.unpack(from, plane.stride, planes.y(row), planes.stride(), planes.u(row), planes.chromaStride(),
                      planes.v(row), planes.chromaStride(), info.width, 1);
    }
    planes.padOddColumn();
    BWYuvConvert::toJpegColours(planes, info.matrix, BWColorRange::Full);
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

void BWYuvPlanes::padBlocks()
{
    constexpr int lumaBlock = 16; // two columns of luma for one of chroma
    const auto pad = [](uint8_t *row, int width, int unit) {
        const int padded = (width + unit - 1) / unit * unit;
        std::fill(row + width, row + padded, row[width - 1]);
    };
    for (int row = 0; row < m_height && m_width % lumaBlock != 0; ++row) {
        pad(y(row), m_width, lumaBlock);
        pad(u(row), chromaWidth(), lumaBlock / 2);
        pad(v(row), chromaWidth(), lumaBlock / 2);
    }
}

bool BWYuvConvert::toJpegPlanes(const BWFrameInfo &info, int first, int count, BWYuvPlanes &planes)
{
    const bool halved = info.pixelFormat == BWPixelFormat::NV12 || info.pixelFormat == BWPixelFormat::YU12;
    BWFrameInfo part = info;
    part.height = count;
    for (std::size_t i = 0; i < part.planes.size(); ++i) {
        BWPlane &plane = part.planes[i];
        if (plane.data)
            plane.data += static_cast<std::ptrdiff_t>(halved && i > 0 ? first / 2 : first) * plane.stride;
    }
    return toJpegPlanes(part, planes);
}

bool BWYuvConvert::toJpegPlanes(const BWFrameInfo &info, BWYuvPlanes &planes)
{
    const int width = info.width;
    const int height = info.height;
    const auto &[first, second, third] = info.planes;
    planes.resize(width, height);
    switch (info.pixelFormat) {
    case BWPixelFormat::YUYV:
        packedToJpegPlanes(info, yuyv, planes);
        return true;
    case BWPixelFormat::UYVY:
        packedToJpegPlanes(info, uyvy, planes);
        return true;
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
            run<stretchEach>(planes.y(), planes.stride() * height, lumaStretch);
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
        run<stretchEach>(planes.y(), size, lumaStretch);
        run<stretchEach>(planes.u(), size / 2, chromaStretch);
        run<stretchEach>(planes.v(), size / 2, chromaStretch);
    }
    if (matrix == BWColorMatrix::BT709)
        convertMatrix(planes.y(), planes.u(), planes.v(), size / 2);
}
