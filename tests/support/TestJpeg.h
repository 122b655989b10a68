// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <cstdio> // jpeglib.h wants it
#include <cstdlib>
#include <jpeglib.h>
#include <memory>
#include <QByteArray>
#include <QImage>
#include <random>

/// JPEG pictures as cameras make them, and as they do not. The test links PkgConfig::jpeg.
namespace TestJpeg {

struct Options {
    int horizontal = 1; ///< how many pixels share a colour
    int vertical = 1;
    bool grey = false;
    int restartRows = 0;
    bool progressive = false;
    bool huffmanTables = true;
};

/// Noise with edges, so that no pixel is like its neighbours and no row or column like another.
inline QImage noise(QSize size, unsigned seed)
{
    std::mt19937 random(seed);
    QImage image(size, QImage::Format_RGB888);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(
                x, y, QColor::fromHsv(int(random() % 360), int(random() % 256), 90 + (x / 5 + y / 3) % 2 * 120));
    return image;
}

inline QByteArray encode(const QImage &image, const Options &options = {})
{
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char *bytes = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&info, &bytes, &length);
    info.image_width = JDIMENSION(image.width());
    info.image_height = JDIMENSION(image.height());
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_colorspace(&info, options.grey ? JCS_GRAYSCALE : JCS_YCbCr);
    info.comp_info[0].h_samp_factor = options.horizontal;
    info.comp_info[0].v_samp_factor = options.vertical;
    info.restart_in_rows = options.restartRows;
    if (options.progressive)
        jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    for (int y = 0; y < image.height(); ++y) {
        auto *row = const_cast<JSAMPROW>(image.constScanLine(y));
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    QByteArray jpeg(reinterpret_cast<char *>(bytes), qsizetype(length));
    free(bytes);
    for (qsizetype at = 0; !options.huffmanTables && (at = jpeg.indexOf("\xff\xc4")) >= 0;)
        jpeg.remove(at, 2 + uchar(jpeg[at + 2]) * 256 + uchar(jpeg[at + 3]));
    return jpeg;
}

inline BWFrame frame(const QByteArray &jpeg, QSize size, std::chrono::microseconds time = {})
{
    auto bytes = std::make_shared<QByteArray>(jpeg);
    BWFrameInfo info{
        BWPixelFormat::MJPEG, size.width(), size.height(), {}, {}, {}, std::chrono::steady_clock::time_point(time), 0};
    info.planes[0] = {reinterpret_cast<const uint8_t *>(bytes->constData()), std::size_t(bytes->size()), 0};
    return {info, [bytes] {}};
}

} // namespace TestJpeg
