// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWSnapshotTags.h"

#include "BWACUDriver/BWJpegHeader.h"
#include "Utils/BWLogging.h"

#include <cstdlib>
#include <cstring>
#include <libexif/exif-data.h>
#include <memory>
#include <QtEndian>

namespace {

struct ExifDeleter {
    void operator()(ExifData *data) const { exif_data_unref(data); }
    void operator()(ExifEntry *entry) const { exif_entry_unref(entry); }
    void operator()(ExifMem *memory) const { exif_mem_unref(memory); }
};

constexpr qsizetype markerSize = 4; // marker and length
constexpr qsizetype largestSegment = 0xffff;

void add(ExifData &data, ExifIfd directory, ExifTag tag, ExifFormat format, const QByteArray &bytes)
{
    const std::unique_ptr<ExifMem, ExifDeleter> memory(exif_mem_new_default());
    const std::unique_ptr<ExifEntry, ExifDeleter> entry(exif_entry_new_mem(memory.get()));
    const auto size = static_cast<unsigned int>(bytes.size());
    auto *const value = static_cast<unsigned char *>(exif_mem_alloc(memory.get(), size));
    if (!value)
        return;
    std::memcpy(value, bytes.constData(), size);
    entry->tag = tag;
    entry->format = format;
    entry->components = size / exif_format_get_size(format);
    entry->data = value;
    entry->size = size;
    exif_content_add_entry(data.ifd[directory], entry.get());
}

void addText(ExifData &data, ExifIfd directory, ExifTag tag, const QString &text)
{
    add(data, directory, tag, EXIF_FORMAT_ASCII, text.toUtf8() + '\0');
}

void addNumber(ExifData &data, ExifTag tag, int value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    exif_set_long(reinterpret_cast<unsigned char *>(bytes.data()), exif_data_get_byte_order(&data),
                  static_cast<ExifLong>(value));
    add(data, EXIF_IFD_EXIF, tag, EXIF_FORMAT_LONG, bytes);
}

QString offsetFromUtc(const QDateTime &time)
{
    const int minutes = time.offsetFromUtc() / 60;
    return QStringLiteral("%1%2:%3")
        .arg(QLatin1Char(minutes < 0 ? '-' : '+'))
        .arg(std::abs(minutes) / 60, 2, 10, QLatin1Char('0'))
        .arg(std::abs(minutes) % 60, 2, 10, QLatin1Char('0'));
}

QByteArray exifSegment(const BWSnapshotTags &tags, QSize size)
{
    const std::unique_ptr<ExifData, ExifDeleter> data(exif_data_new());
    const QString time = tags.taken.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    addText(*data, EXIF_IFD_0, EXIF_TAG_DATE_TIME, time);
    if (!tags.camera.isEmpty())
        addText(*data, EXIF_IFD_0, EXIF_TAG_MODEL, tags.camera);
    if (!tags.software.isEmpty())
        addText(*data, EXIF_IFD_0, EXIF_TAG_SOFTWARE, tags.software);
    addText(*data, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL, time);
    addText(*data, EXIF_IFD_EXIF, EXIF_TAG_SUB_SEC_TIME_ORIGINAL, tags.taken.toString(QStringLiteral("zzz")));
    addText(*data, EXIF_IFD_EXIF, EXIF_TAG_OFFSET_TIME_ORIGINAL, offsetFromUtc(tags.taken));

    add(*data, EXIF_IFD_EXIF, EXIF_TAG_EXIF_VERSION, EXIF_FORMAT_UNDEFINED, "0231");
    addNumber(*data, EXIF_TAG_PIXEL_X_DIMENSION, size.width());
    addNumber(*data, EXIF_TAG_PIXEL_Y_DIMENSION, size.height());
    // What else the standard demands.
    exif_data_set_data_type(data.get(), EXIF_DATA_TYPE_COMPRESSED);
    exif_data_fix(data.get());

    unsigned char *bytes = nullptr;
    unsigned int length = 0;
    exif_data_save_data(data.get(), &bytes, &length);
    const std::unique_ptr<unsigned char, decltype(&std::free)> owner(bytes, &std::free);
    if (length == 0 || length + 2 > largestSegment)
        return {};
    QByteArray segment("\xff\xe1\0\0", markerSize);
    qToBigEndian(static_cast<uint16_t>(length + 2), segment.data() + 2);
    return segment.append(reinterpret_cast<const char *>(bytes), length);
}

} // namespace

QByteArray BWSnapshotTags::addedTo(const QByteArray &jpeg) const
{
    const BWJpegHeader header(reinterpret_cast<const uint8_t *>(jpeg.constData()), std::size_t(jpeg.size()));
    if (!header.isWhole())
        return jpeg;
    const auto place = static_cast<qsizetype>(header.exifOffset());
    QByteArray tagged = header.hasExif()
        ? jpeg
        : jpeg.left(place) + exifSegment(*this, {header.width(), header.height()}) + jpeg.mid(place);
    BWPictureMetadata metadata = scale;
    if (!BWCalibration::isNamed(measuredIn, {header.width(), header.height()}))
        metadata.measurements.clear();
    if (!metadata.calibration.holdsFor({header.width(), header.height()}))
        metadata.calibration = {};
    if (metadata.calibration.isNull() && metadata.measurements.isEmpty())
        return tagged;
    const BWPictureMetadata::Written scaled = metadata.addedTo(tagged);
    if (scaled.problem == BWPictureProblem::None)
        return scaled.jpeg;
    qCWarning(bwApp, "Snapshot: it goes without scale and measurements, as %s", qUtf8Printable(scaled.detail));
    return tagged;
}
