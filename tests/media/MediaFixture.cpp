#include "MediaFixture.h"

#include <cmath>
#include <QList>
#include <QRandomGenerator>
#include <turbojpeg.h>
#include <vector>

namespace {

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
