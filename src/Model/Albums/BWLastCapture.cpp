// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWLastCapture.h"

#include "Model/Thumbnails/BWThumbnailMaker.h"
#include "Utils/BWFilePath.h"

#include <algorithm>
#include <array>
#include <libexif/exif-data.h>
#include <memory>
#include <QDateTime>
#include <utility>

namespace {

using namespace Qt::StringLiterals;

/// When a picture was taken, as its Exif data say; an invalid time if they do not.
QDateTime timeIn(const QByteArray &jpeg)
{
    struct Deleter {
        void operator()(ExifData *data) const { exif_data_unref(data); }
    };
    const std::unique_ptr<ExifData, Deleter> data(exif_data_new_from_data(
        reinterpret_cast<const unsigned char *>(jpeg.constData()), static_cast<unsigned>(jpeg.size())));
    if (!data)
        return {};
    const auto text = [&data](ExifTag tag) {
        std::array<char, 64> value{};
        const ExifEntry *entry = exif_content_get_entry(data->ifd[EXIF_IFD_EXIF], tag);
        if (entry)
            exif_entry_get_value(const_cast<ExifEntry *>(entry), value.data(), static_cast<unsigned>(value.size()));
        return QString::fromLatin1(value.data()).trimmed();
    };
    const QString time = text(EXIF_TAG_DATE_TIME_ORIGINAL);
    const QDateTime local = QDateTime::fromString(time, u"yyyy:MM:dd HH:mm:ss"_s);
    const int milliseconds = u"0.%1"_s.arg(text(EXIF_TAG_SUB_SEC_TIME_ORIGINAL)).toDouble() * 1000;
    const QDateTime zoned =
        QDateTime::fromString(local.toString(Qt::ISODate) + text(EXIF_TAG_OFFSET_TIME_ORIGINAL), Qt::ISODate);
    return (zoned.isValid() ? zoned : local).addMSecs(milliseconds);
}

/// In milliseconds. What is measured in a picture later makes its file newer, but not the picture.
qint64 takenAt(const QUrl &url)
{
    constexpr int headSize = 128 << 10; // Exif data are at the beginning, and smaller
    const BWThumbnailFile file(BWFilePath::native(url));
    const auto stamp = file.isOpen() ? file.stamp() : std::nullopt;
    if (!stamp)
        return 0;
    constexpr int perMillisecond = 1'000'000;
    const qint64 modified = stamp->modified * 1000 + stamp->modifiedNanoseconds / perMillisecond;
    const QDateTime taken = timeIn(file.head(headSize));
    return taken.isValid() ? std::min(taken.toMSecsSinceEpoch(), modified) : modified;
}

/// Waits for the disk.
bool isNewer(const QUrl &file, const QUrl &other)
{
    return takenAt(file) > takenAt(other);
}

} // namespace

BWLastCapture::BWLastCapture(const BWAlbumManager &albums, const BWAlbumContents &contents)
    : m_albums(albums), m_contents(contents)
{
    connect(&contents, &BWAlbumContents::reloaded, this, &BWLastCapture::update);
    connect(&contents, &BWAlbumContents::changed, this, &BWLastCapture::update);
    update();
}

void BWLastCapture::captureAdded(const QUrl &file)
{
    if (m_albums.albumOfFile(file) != m_albums.currentAlbum())
        return;
    m_added = file;
    m_wasListed = false;
    setFile(file);
}

void BWLastCapture::update()
{
    const QList<QUrl> &images = m_contents.files(BWMediaType::Image);
    const QList<QUrl> &videos = m_contents.files(BWMediaType::Video);
    const bool isListed = images.contains(m_added) || videos.contains(m_added);
    // A listing may be older than the capture.
    const bool isStillComing =
        !m_added.isEmpty() && !m_wasListed && m_albums.albumOfFile(m_added) == m_albums.currentAlbum();
    m_wasListed = m_wasListed || isListed;
    if (isListed || isStillComing)
        setFile(m_added);
    else if (m_contents.state() == BWAlbumContents::State::NotAnswering)
        return;
    else if (images.isEmpty() || videos.isEmpty())
        setFile(images.isEmpty() ? videos.value(0) : images.first());
    else
        compare(images.first(), videos.first());
}

void BWLastCapture::setFile(const QUrl &file)
{
    ++m_question;
    if (std::exchange(m_file, file) != file)
        Q_EMIT changed();
}

/// Their names tell the day, but not which of the two came last.
void BWLastCapture::compare(const QUrl &image, const QUrl &video)
{
    m_disk.run([this, image, video, question = ++m_question, alive = m_alive.watch()] {
        const QUrl newer = isNewer(video, image) ? video : image;
        BWMainQueue::post(alive, [this, newer, question] {
            if (question == m_question)
                setFile(newer);
        });
    });
}
