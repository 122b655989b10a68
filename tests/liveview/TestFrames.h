#pragma once

#include "BWACUDriver/BWFrame.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <QColor>
#include <QSize>
#include <vector>

/// Frames with known colours, made with the formulas of ITU-R BT.601 and BT.709 in floating point.
namespace TestFrames {

struct Yuv {
    uint8_t y, u, v;
};

inline Yuv toYuv(const QColor &color, BWColorMatrix matrix, BWColorRange range)
{
    const double kr = matrix == BWColorMatrix::BT601 ? 0.299 : 0.2126;
    const double kb = matrix == BWColorMatrix::BT601 ? 0.114 : 0.0722;
    const double luma = kr * color.redF() + (1 - kr - kb) * color.greenF() + kb * color.blueF();
    const double u = (color.blueF() - luma) / (2 * (1 - kb));
    const double v = (color.redF() - luma) / (2 * (1 - kr));
    const bool full = range == BWColorRange::Full;
    const auto byte = [](double value) { return static_cast<uint8_t>(std::clamp(std::lround(value), 0L, 255L)); };
    return {byte(full ? luma * 255 : 16 + luma * 219), byte(128 + u * (full ? 255 : 224)),
            byte(128 + v * (full ? 255 : 224))};
}

/// A frame whose pixel at (x, y) has the colour `color(x, y)`, the same for each 2x2 block.
inline BWFrame make(BWPixelFormat format, QSize size, const std::function<QColor(int, int)> &color,
                    BWColorMatrix matrix = BWColorMatrix::BT601, BWColorRange range = BWColorRange::Limited,
                    uint64_t sequence = 0)
{
    const int width = size.width();
    const int height = size.height();
    const int padding = 6; // rows longer than the picture, as drivers have them
    auto bytes = std::make_shared<std::vector<uint8_t>>();
    BWFrameInfo info{format, width, height, {}, matrix, range, {}, sequence};

    std::array<int, 3> strides{};
    std::array<int, 3> rows{};
    switch (format) {
    case BWPixelFormat::YUYV:
    case BWPixelFormat::UYVY:
        strides[0] = width * 2 + padding;
        break;
    case BWPixelFormat::RGB24:
    case BWPixelFormat::BGR24:
        strides[0] = width * 3 + padding;
        break;
    case BWPixelFormat::NV12:
        strides = {width + padding, width + padding, 0};
        rows[1] = height / 2;
        break;
    case BWPixelFormat::YU12:
        strides = {width + padding, width / 2 + padding, width / 2 + padding};
        rows[1] = rows[2] = height / 2;
        break;
    default:
        strides[0] = width + padding;
    }
    rows[0] = height;
    std::array<std::size_t, 4> offsets{};
    for (std::size_t i = 0; i < 3; ++i)
        offsets[i + 1] = offsets[i] + static_cast<std::size_t>(strides[i] * rows[i]);
    bytes->resize(offsets[3]);
    const auto at = [&](std::size_t plane, int x, int y) -> uint8_t & {
        return (*bytes)[offsets[plane] + static_cast<std::size_t>(y * strides[plane] + x)];
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const QColor rgb = color(x, y);
            const Yuv yuv = toYuv(rgb, matrix, range);
            switch (format) {
            case BWPixelFormat::YUYV:
                at(0, x * 2, y) = yuv.y;
                at(0, x * 2 + 1, y) = x % 2 == 0 ? yuv.u : yuv.v;
                break;
            case BWPixelFormat::UYVY:
                at(0, x * 2 + 1, y) = yuv.y;
                at(0, x * 2, y) = x % 2 == 0 ? yuv.u : yuv.v;
                break;
            case BWPixelFormat::NV12:
                at(0, x, y) = yuv.y;
                at(1, x, y / 2) = x % 2 == 0 ? yuv.u : yuv.v;
                break;
            case BWPixelFormat::YU12:
                at(0, x, y) = yuv.y;
                at(1, x / 2, y / 2) = yuv.u;
                at(2, x / 2, y / 2) = yuv.v;
                break;
            case BWPixelFormat::RGB24:
                at(0, x * 3, y) = static_cast<uint8_t>(rgb.red());
                at(0, x * 3 + 1, y) = static_cast<uint8_t>(rgb.green());
                at(0, x * 3 + 2, y) = static_cast<uint8_t>(rgb.blue());
                break;
            case BWPixelFormat::BGR24:
                at(0, x * 3, y) = static_cast<uint8_t>(rgb.blue());
                at(0, x * 3 + 1, y) = static_cast<uint8_t>(rgb.green());
                at(0, x * 3 + 2, y) = static_cast<uint8_t>(rgb.red());
                break;
            default:
                at(0, x, y) = yuv.y;
            }
        }
    }
    for (std::size_t i = 0; i < 3; ++i)
        if (rows[i] > 0)
            info.planes[i] = {bytes->data() + offsets[i], offsets[i + 1] - offsets[i], strides[i]};
    return {info, [bytes] {}};
}

} // namespace TestFrames
