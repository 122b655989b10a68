#include "Model/Thumbnails/BWThumbnailPng.h"

#include <array>
#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>
#include <QtEndian>

namespace {

const QByteArray signature("\x89PNG\r\n\x1a\n");
constexpr qsizetype chunkFrame = 12; // length, type, checksum
constexpr qsizetype endOfHeader = 8 + chunkFrame + 13; // the header is the first chunk, of a fixed size
constexpr int quickCompression = 12; // of 100: the fastest level of zlib that compresses at all
constexpr int mostPixels = 1024; // of a side: the largest size that the desktop knows

uint32_t checksum(const QByteArray &bytes)
{
    static const auto table = [] {
        std::array<uint32_t, 256> values{};
        for (uint32_t i = 0; i < values.size(); ++i) {
            uint32_t value = i;
            for (int bit = 0; bit < 8; ++bit)
                value = value & 1 ? 0xedb88320U ^ (value >> 1) : value >> 1;
            values[i] = value;
        }
        return values;
    }();
    uint32_t sum = ~0U;
    for (const char byte : bytes)
        sum = table[(sum ^ static_cast<uint8_t>(byte)) & 0xff] ^ (sum >> 8);
    return ~sum;
}

QByteArray number(uint32_t value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray textChunk(const QByteArray &keyword, const QByteArray &text)
{
    const QByteArray content = "tEXt" + keyword + '\0' + text;
    return number(static_cast<uint32_t>(content.size() - 4)) + content + number(checksum(content));
}

} // namespace

// Qt would compress longer texts, which not every reader of the cache understands.
QByteArray BWThumbnailPng::encode(const QImage &image, const Texts &texts)
{
    QBuffer buffer;
    QImageWriter writer(&buffer, "png");
    writer.setCompression(quickCompression);
    if (!writer.write(image))
        return {};
    QByteArray chunks;
    for (auto text = texts.begin(); text != texts.end(); ++text)
        chunks += textChunk(text.key(), text.value());
    return QByteArray(buffer.data()).insert(endOfHeader, chunks);
}

BWThumbnailPng::Texts BWThumbnailPng::texts(const QByteArray &png)
{
    Texts texts;
    if (!png.startsWith(signature))
        return texts;
    for (qsizetype at = signature.size(); at + chunkFrame <= png.size();) {
        const auto length = qFromBigEndian<uint32_t>(png.constData() + at);
        const QByteArray type = png.mid(at + 4, 4);
        if (type == "IEND" || length > png.size() - at - chunkFrame)
            break;
        if (type == "tEXt") {
            const QByteArray content = png.mid(at + 8, length);
            const qsizetype end = content.indexOf('\0');
            if (end > 0)
                texts.insert(content.left(end), content.mid(end + 1));
        }
        at += chunkFrame + length;
    }
    return texts;
}

QImage BWThumbnailPng::decode(const QByteArray &png)
{
    QBuffer buffer;
    buffer.setData(png);
    QImageReader reader(&buffer, "png");
    const QSize size = reader.size();
    if (size.isEmpty() || size.width() > mostPixels || size.height() > mostPixels)
        return {};
    return reader.read().convertToFormat(QImage::Format_RGB32);
}
