// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Thumbnails/BWThumbnailMaker.h"

#include "BWACUDriver/BWFileBytes.h"
#include "BWACUDriver/BWMovie.h"
#include "Utils/BWLogging.h"

#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int64_t nanosecondsPerSecond = 1'000'000'000;

std::optional<BWFileStamp> stampFrom(const struct stat &info)
{
    if (!S_ISREG(info.st_mode))
        return std::nullopt;
    return BWFileStamp{info.st_mtim.tv_sec, info.st_mtim.tv_nsec,
                       info.st_ctim.tv_sec * nanosecondsPerSecond + info.st_ctim.tv_nsec, info.st_size, info.st_ino};
}

constexpr std::size_t keptMemory = 16 << 20; // bytes
const QString unread = QStringLiteral("cannot be read");
constexpr int64_t settled = 10; // seconds without a change after which the file counts as written

bool changedJustNow(const BWFileStamp &stamp)
{
    const int64_t age = std::time(nullptr) - stamp.modified;
    return age >= 0 && age < settled;
}

} // namespace

std::optional<BWFileStamp> BWThumbnailFile::stampOf(const QByteArray &path)
{
    struct stat info;
    return ::stat(path.constData(), &info) == 0 ? stampFrom(info) : std::nullopt;
}

// Another file may take the name after the check: the flags keep a pipe or a terminal from doing harm then.
BWThumbnailFile::BWThumbnailFile(const QByteArray &path)
    : m_file(stampOf(path) ? ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC) : -1)
{
    if (m_file >= 0 && !stamp()) {
        ::close(m_file);
        m_file = -1;
    }
}

BWThumbnailFile::~BWThumbnailFile()
{
    if (m_file >= 0)
        ::close(m_file);
}

std::optional<BWFileStamp> BWThumbnailFile::stamp() const
{
    struct stat info;
    return ::fstat(m_file, &info) == 0 ? stampFrom(info) : std::nullopt;
}

QByteArray BWThumbnailFile::head(int count) const
{
    QByteArray bytes(count, Qt::Uninitialized);
    const int64_t got = BWFileBytes::readAt(m_file, 0, bytes.data(), count);
    return bytes.left(got > 0 ? got : 0);
}

bool BWThumbnailFile::read(std::vector<uint8_t> &bytes, int64_t most) const
{
    const std::optional<BWFileStamp> now = stamp();
    if (!now || now->size > most)
        return false;
    bytes.resize(static_cast<std::size_t>(now->size));
    return BWFileBytes::readAt(m_file, 0, bytes.data(), now->size) == now->size;
}

BWMadeThumbnail BWThumbnailMaker::make(const QByteArray &path, BWThumbnailSize size)
{
    BWMadeThumbnail made;
    const BWThumbnailFile file(path);
    made.stamp = file.isOpen() ? file.stamp() : BWThumbnailFile::stampOf(path);
    if (!made.stamp || !file.isOpen())
        return made;

    QString error;
    const bool isJpeg = file.head(2) == "\xff\xd8";
    made.thumbnail = isJpeg ? picture(file, size, error) : movie(file, size, error);
    const bool impossible = made.thumbnail.kind == BWThumbnail::Kind::Impossible;
    const bool changedMeanwhile = file.stamp() != made.stamp;
    // A lack of memory, as every decoder calls it, or a disk that fails says nothing about the file.
    const bool isPassing = impossible && (error == unread || error.contains(QStringLiteral("memory")));
    made.unsettled = changedMeanwhile || isPassing || (impossible && changedJustNow(*made.stamp));
    made.worthKeeping = !made.unsettled;
    if (isPassing)
        made.stamp.reset(); // so that it is looked at again
    if (impossible && !made.unsettled)
        qCInfo(bwModel, "No thumbnail of %s: %s", path.constData(), qPrintable(error));
    return made;
}

BWThumbnail BWThumbnailMaker::picture(const BWThumbnailFile &file, BWThumbnailSize size, QString &error)
{
    BWThumbnail thumbnail;
    if (file.read(m_bytes, BWJpegPicture::largestFile))
        thumbnail.image = m_jpeg.thumbnail(m_bytes, size, &error);
    else
        error = file.stamp().value_or(BWFileStamp()).size > BWJpegPicture::largestFile ? QStringLiteral("is too large")
                                                                                       : unread;
    if (m_bytes.capacity() > keptMemory)
        m_bytes = {};
    if (!thumbnail.image.isNull())
        thumbnail.kind = BWThumbnail::Kind::Picture;
    return thumbnail;
}

BWThumbnail BWThumbnailMaker::movie(const BWThumbnailFile &file, BWThumbnailSize size, QString &error)
{
    const int most = BWThumbnailSizes::pixels(size);
    const std::optional<BWMoviePicture> picture = BWMoviePicture::read(file.descriptor(), {most, most}, &error);
    if (!picture)
        return {};
    BWThumbnail thumbnail{BWThumbnail::Kind::Picture, picture->image, std::nullopt};
    if (picture->length)
        thumbnail.length = std::chrono::round<std::chrono::seconds>(*picture->length);
    return thumbnail;
}
