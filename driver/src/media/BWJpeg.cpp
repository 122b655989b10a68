#include "media/BWJpeg.h"

#include "media/BWJpegCodec.h"
#include "media/BWJpegHeader.h"
#include "media/BWMediaLogging.h"
#include "media/BWYuvConvert.h"

namespace {

constexpr std::size_t maxPadding = 256 * 1024; // more zeros than this after the end marker are not looked through

/// The size without the zeros after the end marker; 0 if there is no end marker.
std::size_t sizeToEndMarker(const uint8_t *data, std::size_t size)
{
    const std::size_t least = size > maxPadding ? size - maxPadding : 0;
    while (size > least && data[size - 1] == 0)
        --size;
    const bool ends = size >= 2 && data[size - 2] == 0xff && data[size - 1] == BWJpegHeader::endOfImage;
    return ends ? size : 0;
}

} // namespace

bool BWJpeg::looksComplete(const uint8_t *data, std::size_t size)
{
    const BWJpegHeader header(data, size);
    return header.isWhole() && sizeToEndMarker(data, size) > header.scanOffset();
}

bool BWJpeg::decodesCleanly(const uint8_t *data, std::size_t size)
{
    return data && size > 0 && BWJpegCodec::decodes(data, size);
}

bool BWJpeg::hasHuffmanTables(const uint8_t *data, std::size_t size)
{
    return BWJpegHeader(data, size).hasHuffmanTables();
}

QByteArray BWJpeg::withHuffmanTables(const uint8_t *data, std::size_t size)
{
    const BWJpegHeader header(data, size);
    if (const std::size_t trimmed = sizeToEndMarker(data, size); trimmed > 0)
        size = trimmed;
    const auto *bytes = reinterpret_cast<const char *>(data);
    const auto length = static_cast<qsizetype>(size);
    if (!header.isWhole() || header.hasHuffmanTables() || !header.isBaseline())
        return QByteArray(bytes, length);

    const QByteArray tables = BWJpegHeader::standardHuffmanTables();
    const auto scan = static_cast<qsizetype>(header.scanOffset());
    QByteArray result;
    result.reserve(length + tables.size());
    result.append(bytes, scan);
    result.append(tables);
    result.append(bytes + scan, length - scan);
    return result;
}

QByteArray BWJpeg::encode(const BWFrame &rawFrame, int quality)
{
    const BWFrameInfo &info = rawFrame.info();
    BWJpegCodec::Bytes bytes;
    if (!BWYuvConvert::isWhole(info)) {
        qCWarning(bwMedia) << "A frame of" << rawFrame.size() << "pixels in format" << int(info.pixelFormat)
                           << "cannot be encoded: no raw format, or too few bytes";
        return {};
    }
    if (info.pixelFormat == BWPixelFormat::RGB24 || info.pixelFormat == BWPixelFormat::BGR24) {
        const auto order = info.pixelFormat == BWPixelFormat::RGB24 ? BWJpegCodec::Order::RGB : BWJpegCodec::Order::BGR;
        bytes =
            BWJpegCodec::compress(info.planes[0].data, info.planes[0].stride, info.width, info.height, order, quality);
    } else {
        thread_local BWYuvPlanes planes;
        BWYuvConvert::toJpegPlanes(info, planes);
        bytes = info.pixelFormat == BWPixelFormat::GREY ? BWJpegCodec::compressGrey(planes, quality)
                                                        : BWJpegCodec::compress(planes, quality);
    }
    if (bytes.empty()) {
        qCWarning(bwMedia) << "A frame of" << rawFrame.size()
                           << "pixels could not be encoded:" << BWJpegCodec::lastError();
        return {};
    }
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size()));
}
