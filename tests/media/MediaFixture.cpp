#include "MediaFixture.h"

#include <algorithm>
#include <cmath>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <turbojpeg.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct Yuv {
    uint8_t y, u, v;
};

Yuv toYuv(QColor colour, BWColorMatrix matrix, BWColorRange range)
{
    const double kr = matrix == BWColorMatrix::BT601 ? 0.299 : 0.2126;
    const double kb = matrix == BWColorMatrix::BT601 ? 0.114 : 0.0722;
    const double y = kr * colour.redF() + (1 - kr - kb) * colour.greenF() + kb * colour.blueF();
    const double u = (colour.blueF() - y) / (2 * (1 - kb));
    const double v = (colour.redF() - y) / (2 * (1 - kr));
    const bool full = range == BWColorRange::Full;
    const auto rounded = [](double value) { return uint8_t(std::clamp(std::lround(value), 0L, 255L)); };
    return {rounded(full ? 255 * y : 16 + 219 * y), rounded(128 + (full ? 255 : 224) * u),
            rounded(128 + (full ? 255 : 224) * v)};
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
    const int chromaWidth = (width + 1) / 2;
    const int chromaHeight = (height + 1) / 2;
    const auto colourAt = [&](int x) { return x < width / 2 ? left : right; };
    auto buffers = std::make_shared<std::array<std::vector<uint8_t>, 3>>();
    BWFrameInfo info;
    const auto plane = [&](size_t index, int rowBytes, int rows, auto fill) {
        const int stride = rowBytes + 6; // as drivers like to pad rows
        std::vector<uint8_t> &buffer = (*buffers)[index];
        buffer.assign(size_t(stride) * size_t(rows), 0xee);
        for (int row = 0; row < rows; ++row)
            fill(buffer.data() + row * stride);
        info.planes[index] = {buffer.data(), buffer.size(), stride};
    };
    const auto packed = [&](std::array<int, 4> order) { // places of Y0 U Y1 V
        plane(0, chromaWidth * 4, height, [&, order](uint8_t *row) {
            for (int x = 0; x < width; x += 2) {
                const Yuv yuv = toYuv(colourAt(x), matrix, range);
                row[2 * x + order[0]] = row[2 * x + order[2]] = yuv.y;
                row[2 * x + order[1]] = yuv.u;
                row[2 * x + order[3]] = yuv.v;
            }
        });
    };
    const auto luma = [&] {
        plane(0, width, height, [&](uint8_t *row) {
            for (int x = 0; x < width; ++x)
                row[x] = toYuv(colourAt(x), matrix, range).y;
        });
    };
    const auto chroma = [&](size_t index, int step, uint8_t Yuv::*part, int place) {
        for (int row = 0; row < chromaHeight; ++row) {
            for (int x = 0; x < chromaWidth; ++x) {
                (*buffers)[index][size_t(row * info.planes[index].stride + x * step + place)] =
                    toYuv(colourAt(2 * x), matrix, range).*part;
            }
        }
    };
    const auto nothing = [](uint8_t *) {};
    switch (format) {
    case BWPixelFormat::YUYV:
        packed({0, 1, 2, 3});
        break;
    case BWPixelFormat::UYVY:
        packed({1, 0, 3, 2});
        break;
    case BWPixelFormat::NV12:
        luma();
        plane(1, chromaWidth * 2, chromaHeight, nothing);
        chroma(1, 2, &Yuv::u, 0);
        chroma(1, 2, &Yuv::v, 1);
        break;
    case BWPixelFormat::YU12:
        luma();
        plane(1, chromaWidth, chromaHeight, nothing);
        plane(2, chromaWidth, chromaHeight, nothing);
        chroma(1, 1, &Yuv::u, 0);
        chroma(2, 1, &Yuv::v, 0);
        break;
    case BWPixelFormat::GREY:
        luma();
        break;
    case BWPixelFormat::RGB24:
    case BWPixelFormat::BGR24:
        plane(0, width * 3, height, [&](uint8_t *row) {
            for (int x = 0; x < width; ++x) {
                const QColor c = colourAt(x);
                row[3 * x + (format == BWPixelFormat::RGB24 ? 0 : 2)] = uint8_t(c.red());
                row[3 * x + 1] = uint8_t(c.green());
                row[3 * x + (format == BWPixelFormat::RGB24 ? 2 : 0)] = uint8_t(c.blue());
            }
        });
        break;
    default:
        qFatal("no raw format");
    }
    info.pixelFormat = format;
    info.width = width;
    info.height = height;
    info.matrix = matrix;
    info.range = range;
    info.timestamp = std::chrono::steady_clock::time_point(time);
    return BWFrame(info, [buffers] {});
}

QByteArray MediaFixture::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    constexpr int patience = 60'000; // ms
    if (!process.waitForFinished(patience) || process.exitCode() != 0) {
        qInfo() << program << arguments << process.errorString() << process.readAllStandardError();
        return {};
    }
    const QByteArray output = process.readAllStandardOutput();
    return output.isNull() ? QByteArray("") : output;
}

QJsonObject MediaFixture::probe(const QString &file)
{
    const QByteArray json = run(u"ffprobe"_s,
                                {u"-v"_s, u"error"_s, u"-count_frames"_s, u"-show_streams"_s, u"-show_packets"_s,
                                 u"-show_format"_s, u"-of"_s, u"json"_s, file});
    const QJsonObject all = QJsonDocument::fromJson(json).object();
    QJsonObject stream = all[u"streams"_s].toArray().first().toObject();
    if (!stream.isEmpty()) {
        stream[u"packets"_s] = all[u"packets"_s];
        stream[u"format"_s] = all[u"format"_s];
    }
    return stream;
}

QList<QByteArray> MediaFixture::storedPictures(const QString &file)
{
    const QTemporaryDir folder;
    run(u"ffmpeg"_s,
        {u"-v"_s, u"error"_s, u"-i"_s, file, u"-c"_s, u"copy"_s, u"-f"_s, u"image2"_s, folder.filePath(u"%05d.jpg"_s)});
    QList<QByteArray> pictures;
    for (const QString &name : QDir(folder.path()).entryList(QDir::Files, QDir::Name)) {
        QFile picture(folder.filePath(name));
        if (picture.open(QIODevice::ReadOnly))
            pictures << picture.readAll();
    }
    return pictures;
}
