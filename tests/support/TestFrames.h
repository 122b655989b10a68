// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <QByteArrayList>
#include <QColor>
#include <QSize>

/// Frames with known colours, made with the formulas of ITU-R BT.601 and BT.709 in floating point.
namespace TestFrames {

/// Y, U, V, R, G or B of a colour.
inline char component(char which, const QColor &color, BWColorMatrix matrix, BWColorRange range)
{
    const double kr = matrix == BWColorMatrix::BT601 ? 0.299 : 0.2126;
    const double kb = matrix == BWColorMatrix::BT601 ? 0.114 : 0.0722;
    const double luma = kr * color.redF() + (1 - kr - kb) * color.greenF() + kb * color.blueF();
    const bool full = range == BWColorRange::Full;
    const auto byte = [](double value) { return static_cast<char>(std::clamp(std::lround(value), 0L, 255L)); };
    const auto chroma = [&](double part, double weight) {
        return byte(128 + (full ? 255 : 224) * (part - luma) / (2 * (1 - weight)));
    };
    switch (which) {
    case 'Y':
        return byte(full ? luma * 255 : 16 + luma * 219);
    case 'U':
        return chroma(color.blueF(), kb);
    case 'V':
        return chroma(color.redF(), kr);
    default:
        return static_cast<char>(which == 'R' ? color.red() : which == 'G' ? color.green() : color.blue());
    }
}

/// A frame whose pixel at (x, y) has the colour `color(x, y)`, the same for each 2x2 block.
inline BWFrame make(BWPixelFormat format, QSize size, const std::function<QColor(int, int)> &color,
                    BWColorMatrix matrix = BWColorMatrix::BT601, BWColorRange range = BWColorRange::Limited,
                    std::chrono::microseconds time = {})
{
    // What the bytes of two neighbouring pixels are, plane by plane; planes after the first have every other row.
    static const std::map<BWPixelFormat, QByteArrayList> layouts{
        {BWPixelFormat::YUYV, {"YUYV"}},         {BWPixelFormat::UYVY, {"UYVY"}},
        {BWPixelFormat::NV12, {"YY", "UV"}},     {BWPixelFormat::GREY, {"YY"}},
        {BWPixelFormat::YU12, {"YY", "U", "V"}}, {BWPixelFormat::RGB24, {"RGBRGB"}},
        {BWPixelFormat::BGR24, {"BGRBGR"}},      {BWPixelFormat::XBGR32, {"BGRXBGRX"}},
    };
    const QByteArrayList &layout = layouts.at(format);
    auto buffers = std::make_shared<std::array<QByteArray, 3>>();
    BWFrameInfo info{format, size.width(), size.height(), {}, matrix, range, {}, 0};
    info.timestamp = std::chrono::steady_clock::time_point(time);
    for (qsizetype plane = 0; plane < layout.size(); ++plane) {
        const QByteArray &bytes = layout[plane];
        QByteArray &buffer = (*buffers)[std::size_t(plane)];
        qsizetype stride = 0;
        for (int y = 0; y < size.height(); y += plane == 0 ? 1 : 2) {
            const qsizetype begin = buffer.size();
            for (int pair = 0; pair < size.width(); pair += 2) {
                for (qsizetype i = 0; i < bytes.size(); ++i) {
                    const int x = pair + int(bytes.first(i).count(bytes[i]));
                    buffer += component(bytes[i], color(std::min(x, size.width() - 1), y), matrix, range);
                }
            }
            buffer += QByteArray(6, '\xee'); // rows longer than the picture, as drivers have them
            stride = buffer.size() - begin;
        }
        info.planes[std::size_t(plane)] = {reinterpret_cast<const uint8_t *>(buffer.constData()),
                                           std::size_t(buffer.size()), int(stride)};
    }
    return {info, [buffers] {}};
}

/// The left half of it has the one colour and the right half the other.
inline BWFrame twoColours(BWPixelFormat format, QSize size, QColor left, QColor right,
                          BWColorMatrix matrix = BWColorMatrix::BT601, BWColorRange range = BWColorRange::Limited,
                          std::chrono::microseconds time = {})
{
    return make(
        format, size, [&](int x, int) { return x < size.width() / 2 ? left : right; }, matrix, range, time);
}

} // namespace TestFrames
