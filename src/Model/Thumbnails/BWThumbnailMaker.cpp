#include "Model/Thumbnails/BWThumbnailMaker.h"

#include "BWACUDriver/BWMoviePicture.h"
#include "Utils/BWLogging.h"

#include <ctime>

namespace {

constexpr int64_t largestPicture = 192 * 1024 * 1024; // bytes of the file
constexpr std::size_t keptMemory = 16 * 1024 * 1024; // bytes
constexpr int64_t settled = 10; // seconds without a change after which nobody is taken to be writing

bool changedJustNow(const BWFileStamp &stamp)
{
    const int64_t age = std::time(nullptr) - stamp.modified;
    return age >= 0 && age < settled;
}

} // namespace

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
    made.unsettled = changedMeanwhile || (impossible && changedJustNow(*made.stamp));
    made.worthKeeping = !made.unsettled;
    if (impossible && !made.unsettled)
        qCInfo(bwModel, "No thumbnail of %s: %s", path.constData(), qPrintable(error));
    return made;
}

BWThumbnail BWThumbnailMaker::picture(const BWThumbnailFile &file, BWThumbnailSize size, QString &error)
{
    BWThumbnail thumbnail;
    if (file.read(m_bytes, largestPicture))
        thumbnail.image = m_jpeg.make(m_bytes, size, &error);
    else
        error = QStringLiteral("cannot be read, or is too large");
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
