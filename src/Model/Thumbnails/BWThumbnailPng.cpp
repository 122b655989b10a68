#include "Model/Thumbnails/BWThumbnailPng.h"

#include <algorithm>
#include <array>
#include <QBuffer>
#include <QImageReader>
#include <QtEndian>

namespace {

const QByteArray signature("\x89PNG\r\n\x1a\n");
constexpr qsizetype chunkFrame = 12; // length, type, checksum
constexpr int quickCompression = 1; // of 9
constexpr char differenceToLeft = 1; // PNG's filter "Sub"
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

QByteArray chunk(const char *type, const QByteArray &content)
{
    const QByteArray typed = type + content;
    return number(static_cast<uint32_t>(content.size())) + typed + number(checksum(typed));
}

/// The pixels as differences to those on their left, which compress well enough; PNG writers usually try five ways for
/// each line, and spend more time on that than on compressing.
QByteArray filtered(const QImage &image)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    const qsizetype bytes = qsizetype(rgb.width()) * 3;
    QByteArray result((bytes + 1) * rgb.height(), Qt::Uninitialized);
    char *target = result.data();
    for (int y = 0; y < rgb.height(); ++y) {
        const auto *const line = reinterpret_cast<const char *>(rgb.constScanLine(y));
        *target++ = differenceToLeft;
        std::copy_n(line, 3, target);
        for (qsizetype i = 3; i < bytes; ++i)
            target[i] = static_cast<char>(line[i] - line[i - 3]);
        target += bytes;
    }
    return result;
}

} // namespace

QByteArray BWThumbnailPng::encode(const QImage &image, const Texts &texts)
{
    constexpr qsizetype lengthOfQt = 4; // which qCompress() puts in front
    if (image.isNull())
        return {};
    const QByteArray format("\x08\x02\0\0\0", 5); // 8 bits, RGB, not interlaced
    QByteArray png = signature
        + chunk("IHDR",
                number(static_cast<uint32_t>(image.width())) + number(static_cast<uint32_t>(image.height())) + format);
    for (auto text = texts.begin(); text != texts.end(); ++text)
        png += chunk("tEXt", text.key() + '\0' + text.value());
    return png + chunk("IDAT", qCompress(filtered(image), quickCompression).mid(lengthOfQt)) + chunk("IEND", {});
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
