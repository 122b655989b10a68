#include "MediaFixture.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <QRandomGenerator>
#include <turbojpeg.h>
#include <vector>

namespace {

/// Y, U, V, R, G or B of a colour.
long component(char which, QColor colour, BWColorMatrix matrix, BWColorRange range)
{
    const double kr = matrix == BWColorMatrix::BT601 ? 0.299 : 0.2126;
    const double kb = matrix == BWColorMatrix::BT601 ? 0.114 : 0.0722;
    const double y = kr * colour.redF() + (1 - kr - kb) * colour.greenF() + kb * colour.blueF();
    const bool full = range == BWColorRange::Full;
    const auto chroma = [&](double part, double weight) {
        return std::clamp(std::lround(128 + (full ? 255 : 224) * (part - y) / (2 * (1 - weight))), 0L, 255L);
    };
    switch (which) {
    case 'Y':
        return std::lround(full ? 255 * y : 16 + 219 * y);
    case 'U':
        return chroma(colour.blueF(), kb);
    case 'V':
        return chroma(colour.redF(), kr);
    default:
        return which == 'R' ? colour.red() : which == 'G' ? colour.green() : colour.blue();
    }
}

/// Offset and length of each Huffman segment, marker included.
QList<std::pair<qsizetype, qsizetype>> huffmanSegments(const QByteArray &jpeg)
{
    QList<std::pair<qsizetype, qsizetype>> segments;
    qsizetype offset = 2;
    while (uint8_t(jpeg[offset + 1]) != 0xda) {
        const qsizetype length = 2 + (uint8_t(jpeg[offset + 2]) << 8 | uint8_t(jpeg[offset + 3]));
        if (uint8_t(jpeg[offset + 1]) == 0xc4)
            segments.append({offset, length});
        offset += length;
    }
    return segments;
}

} // namespace

QByteArray MediaFixture::detailedJpeg(int width, int height, int seed)
{
    QRandomGenerator random{quint32(seed)};
    std::vector<uint8_t> pixels(size_t(width) * size_t(height) * 3);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = uint8_t(40 * std::sin(double(i) / 97 + seed) + 128 + random.bounded(60));
    const tjhandle handle = tjInitCompress();
    unsigned char *data = nullptr;
    unsigned long size = 0;
    tjCompress2(handle, pixels.data(), width, 0, height, TJPF_RGB, &data, &size, TJSAMP_422, 80, 0);
    const QByteArray jpeg(reinterpret_cast<const char *>(data), qsizetype(size));
    tjFree(data);
    tjDestroy(handle);
    return jpeg;
}

QByteArray MediaFixture::huffmanTablesOf(const QByteArray &jpeg)
{
    QByteArray tables;
    for (const auto &[offset, length] : huffmanSegments(jpeg))
        tables += jpeg.mid(offset + 4, length - 4);
    return tables;
}

QByteArray MediaFixture::withoutHuffmanTables(const QByteArray &jpeg)
{
    QByteArray result = jpeg;
    const auto segments = huffmanSegments(jpeg);
    for (auto it = segments.crbegin(); it != segments.crend(); ++it)
        result.remove(it->first, it->second);
    return result;
}

BWFrame MediaFixture::jpegFrame(const QByteArray &jpeg, int width, int height, std::chrono::microseconds time)
{
    BWFrameInfo info;
    info.pixelFormat = BWPixelFormat::MJPEG;
    info.width = width;
    info.height = height;
    info.planes[0] = {reinterpret_cast<const uint8_t *>(jpeg.constData()), size_t(jpeg.size()), 0};
    info.range = BWColorRange::Full;
    info.timestamp = std::chrono::steady_clock::time_point(time);
    return BWFrame(info, [jpeg] {});
}

BWFrame MediaFixture::twoColourFrame(BWPixelFormat format, int width, int height, QColor left, QColor right,
                                     BWColorMatrix matrix, BWColorRange range, std::chrono::microseconds time)
{
    // What the bytes of two neighbouring pixels are, plane by plane; planes after the first have every other row.
    static const std::map<BWPixelFormat, QByteArrayList> layouts{
        {BWPixelFormat::YUYV, {"YUYV"}},         {BWPixelFormat::UYVY, {"UYVY"}},
        {BWPixelFormat::NV12, {"YY", "UV"}},     {BWPixelFormat::GREY, {"YY"}},
        {BWPixelFormat::YU12, {"YY", "U", "V"}}, {BWPixelFormat::RGB24, {"RGBRGB"}},
        {BWPixelFormat::BGR24, {"BGRBGR"}},
    };
    const QByteArrayList &layout = layouts.at(format);
    const int pairs = (width + 1) / 2;
    auto buffers = std::make_shared<std::array<QByteArray, 3>>();
    BWFrameInfo info;
    for (qsizetype plane = 0; plane < layout.size(); ++plane) {
        const QByteArray &bytes = layout[plane];
        QByteArray row;
        for (int pair = 0; pair < pairs; ++pair) {
            for (qsizetype i = 0; i < bytes.size(); ++i) {
                const auto x = 2 * pair + bytes.first(i).count(bytes[i]);
                row += char(component(bytes[i], x < width / 2 ? left : right, matrix, range));
            }
        }
        row += QByteArray(6, '\xee'); // as drivers like to pad rows
        QByteArray &buffer = (*buffers)[size_t(plane)];
        buffer = row.repeated(plane == 0 ? height : (height + 1) / 2);
        info.planes[size_t(plane)] = {reinterpret_cast<const uint8_t *>(buffer.constData()), size_t(buffer.size()),
                                      int(row.size())};
    }
    info.pixelFormat = format;
    info.width = width;
    info.height = height;
    info.matrix = matrix;
    info.range = range;
    info.timestamp = std::chrono::steady_clock::time_point(time);
    return BWFrame(info, [buffers] {});
}
