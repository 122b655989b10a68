#include "media/BWJpeg.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWJpegHeader.h"
#include "media/BWYuvPlanes.h"

#include <array>
#include <memory>
#include <QString>
#include <turbojpeg.h>
#include <vector>

namespace {

/// One table: its class and number, how many codes of each length from 1 to 16 bits, and the values in code order.
struct HuffmanTable {
    uint8_t identifier;
    std::array<uint8_t, 16> lengths;
    std::span<const uint8_t> values;
};

constexpr std::array<uint8_t, 12> dcValues{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

constexpr std::array<uint8_t, 162> acLumaValues{
    0x01, 0x02, 0x03, 0x00, 0x04, 0x11, 0x05, 0x12, 0x21, 0x31, 0x41, 0x06, 0x13, 0x51, 0x61, 0x07, 0x22, 0x71,
    0x14, 0x32, 0x81, 0x91, 0xa1, 0x08, 0x23, 0x42, 0xb1, 0xc1, 0x15, 0x52, 0xd1, 0xf0, 0x24, 0x33, 0x62, 0x72,
    0x82, 0x09, 0x0a, 0x16, 0x17, 0x18, 0x19, 0x1a, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x34, 0x35, 0x36, 0x37,
    0x38, 0x39, 0x3a, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59,
    0x5a, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a, 0x83,
    0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9a, 0xa2, 0xa3,
    0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9, 0xaa, 0xb2, 0xb3, 0xb4, 0xb5, 0xb6, 0xb7, 0xb8, 0xb9, 0xba, 0xc2, 0xc3,
    0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca, 0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda, 0xe1, 0xe2,
    0xe3, 0xe4, 0xe5, 0xe6, 0xe7, 0xe8, 0xe9, 0xea, 0xf1, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa};

constexpr std::array<uint8_t, 162> acChromaValues{
    0x00, 0x01, 0x02, 0x03, 0x11, 0x04, 0x05, 0x21, 0x31, 0x06, 0x12, 0x41, 0x51, 0x07, 0x61, 0x71, 0x13, 0x22,
    0x32, 0x81, 0x08, 0x14, 0x42, 0x91, 0xa1, 0xb1, 0xc1, 0x09, 0x23, 0x33, 0x52, 0xf0, 0x15, 0x62, 0x72, 0xd1,
    0x0a, 0x16, 0x24, 0x34, 0xe1, 0x25, 0xf1, 0x17, 0x18, 0x19, 0x1a, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x35, 0x36,
    0x37, 0x38, 0x39, 0x3a, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4a, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58,
    0x59, 0x5a, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6a, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7a,
    0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8a, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9a,
    0xa2, 0xa3, 0xa4, 0xa5, 0xa6, 0xa7, 0xa8, 0xa9, 0xaa, 0xb2, 0xb3, 0xb4, 0xb5, 0xb6, 0xb7, 0xb8, 0xb9, 0xba,
    0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xca, 0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xda,
    0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7, 0xe8, 0xe9, 0xea, 0xf2, 0xf3, 0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0xfa};

constexpr std::array standardTables{
    HuffmanTable{0x00, {0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0}, dcValues},
    HuffmanTable{0x10, {0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 0x7d}, acLumaValues},
    HuffmanTable{0x01, {0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0}, dcValues},
    HuffmanTable{0x11, {0, 2, 1, 2, 4, 4, 3, 4, 7, 5, 4, 4, 0, 1, 2, 0x77}, acChromaValues},
};

/// The tables of ITU-T T.81 Annex K.3 as one segment, including its marker.
QByteArray standardHuffmanTables()
{
    QByteArray tables;
    for (const HuffmanTable &table : standardTables) {
        tables.append(static_cast<char>(table.identifier));
        for (const uint8_t count : table.lengths)
            tables.append(static_cast<char>(count));
        tables.append(reinterpret_cast<const char *>(table.values.data()), static_cast<qsizetype>(table.values.size()));
    }
    const qsizetype length = tables.size() + 2;
    const char head[4] = {'\xff', '\xc4', static_cast<char>(length >> 8), static_cast<char>(length & 0xff)};
    return QByteArray(head, 4) + tables;
}

constexpr uint8_t endOfImage = 0xd9; // marker code
constexpr std::size_t maxPadding = 256 * 1024; // more zeros than this after the end marker are not searched

/// The size without the zeros after the end marker; 0 if there is no end marker.
std::size_t sizeToEndMarker(const uint8_t *data, std::size_t size)
{
    const std::size_t least = size > maxPadding ? size - maxPadding : 0;
    while (size > least && data[size - 1] == 0)
        --size;
    const bool ends = size >= 2 && data[size - 2] == 0xff && data[size - 1] == endOfImage;
    return ends ? size : 0;
}

constexpr long maxImagePixels = 200'000'000; // of an image to be decoded: a damaged header may claim any size

struct HandleDeleter {
    void operator()(void *handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, HandleDeleter>;

struct ThreadState {
    Handle compressor;
    Handle decompressor;
    std::vector<uint8_t> buffer;
    QString error; ///< of the compressor
};

ThreadState &threadState()
{
    thread_local ThreadState state;
    return state;
}

/// Room for the largest possible image, and what runs the compressor on it.
template <typename Run>
BWJpeg::Bytes compressWith(int width, int height, int subsampling, Run run)
{
    ThreadState &state = threadState();
    if (!state.compressor)
        state.compressor.reset(tjInitCompress());
    if (!state.compressor) {
        state.error = QString::fromLatin1(tjGetErrorStr2(nullptr));
        return {};
    }
    const unsigned long room = tjBufSize(width, height, subsampling);
    if (room == static_cast<unsigned long>(-1)) {
        state.error = QStringLiteral("%1x%2 is no size for an image").arg(width).arg(height);
        return {};
    }
    if (state.buffer.size() < room)
        state.buffer.resize(room);
    unsigned char *target = state.buffer.data();
    unsigned long size = state.buffer.size();
    if (run(state.compressor.get(), &target, &size) != 0) {
        state.error = QString::fromLatin1(tjGetErrorStr2(state.compressor.get()));
        return {};
    }
    return {target, size};
}

BWJpeg::Bytes compressPlanes(const BWYuvPlanes &planes, int subsampling, int quality)
{
    std::array<const unsigned char *, 3> data{planes.y(), planes.u(), planes.v()};
    const std::array<int, 3> strides{planes.stride(), planes.chromaStride(), planes.chromaStride()};
    return compressWith(planes.width(), planes.height(), subsampling,
                        [&](tjhandle handle, unsigned char **target, unsigned long *size) {
                            return tjCompressFromYUVPlanes(handle, data.data(), planes.width(), strides.data(),
                                                           planes.height(), subsampling, target, size, quality,
                                                           TJFLAG_NOREALLOC);
                        });
}

/// TurboJPEG's name for a format that keeps the colours of a pixel together; -1 for others.
int rgbOrder(BWPixelFormat format)
{
    switch (format) {
    case BWPixelFormat::RGB24:
        return TJPF_RGB;
    case BWPixelFormat::BGR24:
        return TJPF_BGR;
    case BWPixelFormat::XBGR32:
        return TJPF_BGRX;
    default:
        return -1;
    }
}

BWJpeg::Bytes compressRgb(const BWFrameInfo &info, int quality)
{
    const int order = rgbOrder(info.pixelFormat);
    const BWPlane &plane = info.planes[0];
    return compressWith(info.width, info.height, TJSAMP_422,
                        [&](tjhandle handle, unsigned char **target, unsigned long *size) {
                            return tjCompress2(handle, plane.data, info.width, plane.stride, info.height, order, target,
                                               size, TJSAMP_422, quality, TJFLAG_NOREALLOC);
                        });
}

} // namespace

bool BWJpeg::looksComplete(const uint8_t *data, std::size_t size)
{
    const BWJpegHeader header(data, size);
    return header.isWhole() && sizeToEndMarker(data, size) > header.scanOffset();
}

bool BWJpeg::decodesCleanly(const uint8_t *data, std::size_t size)
{
    if (!data || size == 0)
        return false;
    ThreadState &state = threadState();
    if (!state.decompressor)
        state.decompressor.reset(tjInitDecompress());
    if (!state.decompressor)
        return false;
    const auto failed = [&state] {
        state.decompressor.reset(); // after a damaged header it would consider every image damaged
        return false;
    };
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colourSpace = 0;
    if (tjDecompressHeader3(state.decompressor.get(), data, size, &width, &height, &subsampling, &colourSpace) != 0)
        return failed();
    if (static_cast<long>(width) * height > maxImagePixels)
        return false;
    // Damage shows while the coefficients are read; an eighth of the size and no colour save the rest of the work.
    constexpr tjscalingfactor eighth{1, 8};
    const int smallWidth = TJSCALED(width, eighth);
    const int smallHeight = TJSCALED(height, eighth);
    const std::size_t room = static_cast<std::size_t>(smallWidth) * static_cast<std::size_t>(smallHeight);
    if (state.buffer.size() < room)
        state.buffer.resize(room);
    if (tjDecompress2(state.decompressor.get(), data, size, state.buffer.data(), smallWidth, smallWidth, smallHeight,
                      TJPF_GRAY, TJFLAG_STOPONWARNING)
        != 0)
        return failed();
    return true;
}

BWJpeg::Parts BWJpeg::partsWithHuffmanTables(const uint8_t *data, std::size_t size)
{
    static const QByteArray tables = standardHuffmanTables();
    const BWJpegHeader header(data, size);
    if (const std::size_t trimmed = sizeToEndMarker(data, size); trimmed > 0)
        size = trimmed;
    const Bytes bytes(data, size);
    if (!header.isWhole() || header.hasHuffmanTables() || !header.isBaseline())
        return {bytes};
    return {bytes.first(header.scanOffset()),
            {reinterpret_cast<const uint8_t *>(tables.constData()), static_cast<std::size_t>(tables.size())},
            bytes.subspan(header.scanOffset())};
}

QByteArray BWJpeg::withHuffmanTables(const uint8_t *data, std::size_t size)
{
    const Parts parts = partsWithHuffmanTables(data, size);
    QByteArray result;
    result.reserve(static_cast<qsizetype>(parts[0].size() + parts[1].size() + parts[2].size()));
    for (const Bytes part : parts)
        result.append(reinterpret_cast<const char *>(part.data()), static_cast<qsizetype>(part.size()));
    return result;
}

BWJpeg::Bytes BWJpeg::compress(const BWFrame &rawFrame, int quality)
{
    const BWFrameInfo &info = rawFrame.info();
    if (!info.isWholeRawPicture()) {
        qCWarning(bwMedia) << "A frame of" << rawFrame.size() << "pixels in format" << int(info.pixelFormat)
                           << "cannot be encoded: no raw format, or too few bytes";
        return {};
    }
    Bytes bytes;
    if (rgbOrder(info.pixelFormat) >= 0) {
        bytes = compressRgb(info, quality);
    } else {
        thread_local BWYuvPlanes planes;
        BWYuvConvert::toJpegPlanes(info, planes);
        bytes = compressPlanes(planes, info.pixelFormat == BWPixelFormat::GREY ? TJSAMP_GRAY : TJSAMP_422, quality);
    }
    if (bytes.empty())
        qCWarning(bwMedia) << "A frame of" << rawFrame.size() << "pixels could not be encoded:" << threadState().error;
    return bytes;
}

QByteArray BWJpeg::encode(const BWFrame &rawFrame, int quality)
{
    const Bytes bytes = compress(rawFrame, quality);
    if (bytes.empty())
        return {};
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size()));
}

BWJpeg::Bytes BWJpeg::compress(const BWYuvPlanes &planes, int quality)
{
    return compressPlanes(planes, TJSAMP_422, quality);
}
