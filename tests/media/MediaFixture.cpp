// SPDX-License-Identifier: GPL-3.0-or-later
#include "MediaFixture.h"

#include <cmath>
#include <QBuffer>
#include <QImage>
#include <QRandomGenerator>

QByteArray MediaFixture::detailedJpeg(int width, int height, int seed)
{
    QRandomGenerator random{quint32(seed)};
    const auto grain = [&](int i) { return int(40 * std::sin(i / 97.0 + seed)) + 128 + random.bounded(60); };
    QImage image(width, height, QImage::Format_RGB32);
    for (int i = 0; i < width * height; ++i)
        image.setPixel(i % width, i / width, qRgb(grain(3 * i), grain(3 * i + 1), grain(3 * i + 2)));
    QBuffer buffer;
    image.save(&buffer, "JPEG", 80);
    return buffer.data();
}

QByteArray MediaFixture::withoutHuffmanTables(QByteArray jpeg)
{
    qsizetype segment = 2;
    while (uint8_t(jpeg[segment + 1]) != 0xda) {
        const qsizetype length = 2 + (uint8_t(jpeg[segment + 2]) << 8 | uint8_t(jpeg[segment + 3]));
        if (uint8_t(jpeg[segment + 1]) == 0xc4)
            jpeg.remove(segment, length);
        else
            segment += length;
    }
    return jpeg;
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
