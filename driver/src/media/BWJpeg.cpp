// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/BWJpeg.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWJpegHeader.h"
#include "media/BWYuvPlanes.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio> // jpeglib.h wants it
#include <jpeglib.h>
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
constexpr std::size_t maxPadding =
    std::size_t(256) * 1024; // more zeros than this after the end marker are not searched

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

/// libjpeg's compressor. It takes a frame some rows at a time, so that their planes stay in the processor's cache, while
/// those of a whole picture would come back from memory. TurboJPEG makes the same bytes from those, by the same library.
///
/// libjpeg leaves a function that fails by longjmp(): nothing with a destructor may live in writeFrame().
class StripEncoder {
public:
    StripEncoder();
    ~StripEncoder() { jpeg_destroy_compress(&m_info); }
    StripEncoder(const StripEncoder &) = delete;
    StripEncoder &operator=(const StripEncoder &) = delete;

    /// The size of the image in the buffer, which has room for any; 0 on failure.
    std::size_t encode(const BWFrameInfo &frame, int quality, std::vector<uint8_t> &buffer);
    QString error();

private:
    struct Errors : jpeg_error_mgr {
        std::jmp_buf failed;
    };

    void writeFrame(const BWFrameInfo &frame, int quality);

    Errors m_errors{};
    jpeg_compress_struct m_info{};
    BWYuvPlanes m_strip;
};

StripEncoder::StripEncoder()
{
    m_info.err = jpeg_std_error(&m_errors);
    m_errors.error_exit = [](j_common_ptr info) { std::longjmp(static_cast<Errors *>(info->err)->failed, 1); };
}

std::size_t StripEncoder::encode(const BWFrameInfo &frame, int quality, std::vector<uint8_t> &buffer)
{
    unsigned char *target = buffer.data();
    unsigned long size = buffer.size();
    if (setjmp(m_errors.failed) != 0) {
        jpeg_destroy_compress(&m_info);
        return 0;
    }
    if (!m_info.mem)
        jpeg_create_compress(&m_info);
    jpeg_mem_dest(&m_info, &target, &size);
    writeFrame(frame, quality);
    return size;
}

void StripEncoder::writeFrame(const BWFrameInfo &frame, int quality)
{
    const bool grey = frame.pixelFormat == BWPixelFormat::GREY;
    m_info.image_width = static_cast<JDIMENSION>(frame.width);
    m_info.image_height = static_cast<JDIMENSION>(frame.height);
    m_info.input_components = grey ? 1 : 3;
    m_info.in_color_space = grey ? JCS_GRAYSCALE : JCS_YCbCr;
    jpeg_set_defaults(&m_info);
    jpeg_set_quality(&m_info, quality, TRUE);
    m_info.comp_info[0].h_samp_factor = grey ? 1 : 2;
    m_info.comp_info[0].v_samp_factor = 1;
    m_info.raw_data_in = TRUE;
    m_info.dct_method = quality < 96 ? JDCT_FASTEST : JDCT_ISLOW; // as TurboJPEG chooses
    jpeg_start_compress(&m_info, TRUE);
    for (int first = 0; first < frame.height; first += DCTSIZE) {
        const int count = std::min(DCTSIZE, frame.height - first);
        BWYuvConvert::toJpegPlanes(frame, first, count, m_strip);
        m_strip.padBlocks();
        std::array<std::array<JSAMPROW, DCTSIZE>, 3> rows;
        for (int i = 0; i < DCTSIZE; ++i) {
            const int row = std::min(i, count - 1);
            const auto place = static_cast<std::size_t>(i);
            rows[0][place] = m_strip.y(row);
            rows[1][place] = m_strip.u(row);
            rows[2][place] = m_strip.v(row);
        }
        std::array<JSAMPARRAY, 3> planes{rows[0].data(), rows[1].data(), rows[2].data()};
        jpeg_write_raw_data(&m_info, planes.data(), DCTSIZE);
    }
    jpeg_finish_compress(&m_info);
}

QString StripEncoder::error()
{
    std::array<char, JMSG_LENGTH_MAX> text{};
    m_errors.format_message(reinterpret_cast<j_common_ptr>(&m_info), text.data());
    return QString::fromLocal8Bit(text.data());
}

struct ThreadState {
    StripEncoder strips;
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

/// Makes room for the largest possible image; false if it can have no such size.
bool makeRoom(ThreadState &state, int width, int height, int subsampling)
{
    const unsigned long room = tjBufSize(width, height, subsampling);
    if (room == static_cast<unsigned long>(-1)) {
        state.error = QStringLiteral("%1x%2 is no size for an image").arg(width).arg(height);
        return false;
    }
    if (state.buffer.size() < room)
        state.buffer.resize(room);
    return true;
}

/// Runs TurboJPEG's compressor.
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
    if (!makeRoom(state, width, height, subsampling))
        return {};
    unsigned char *target = state.buffer.data();
    unsigned long size = state.buffer.size();
    if (run(state.compressor.get(), &target, &size) != 0) {
        state.error = QString::fromLatin1(tjGetErrorStr2(state.compressor.get()));
        return {};
    }
    return {target, size};
}

BWJpeg::Bytes compressStrips(const BWFrameInfo &info, int quality)
{
    ThreadState &state = threadState();
    const bool grey = info.pixelFormat == BWPixelFormat::GREY;
    if (!makeRoom(state, info.width, info.height, grey ? TJSAMP_GRAY : TJSAMP_422))
        return {};
    const std::size_t size = state.strips.encode(info, quality, state.buffer);
    if (size == 0)
        state.error = state.strips.error();
    return {state.buffer.data(), size};
}

BWJpeg::Bytes compressPlanes(const BWYuvPlanes &planes, int quality)
{
    constexpr int subsampling = TJSAMP_422;
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
    qsizetype length = 0;
    for (const Bytes part : parts)
        length += static_cast<qsizetype>(part.size());
    result.reserve(length);
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
    const bool rgb = rgbOrder(info.pixelFormat) >= 0;
    const Bytes bytes = rgb ? compressRgb(info, quality) : compressStrips(info, quality);
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
    return compressPlanes(planes, quality);
}
