#include "simulated/picture/BWMakePictureSource.h"

#include "media/BWMediaLogging.h"
#include "media/BWMovieReader.h"
#include "simulated/picture/BWMovieSource.h"
#include "simulated/picture/BWPhotoSource.h"
#include "simulated/picture/BWSpecimenSource.h"

#include <algorithm>
#include <QDir>
#include <QImageReader>

namespace {

std::unique_ptr<BWPictureSource> fromFolder(const QString &path, QString &error)
{
    const QDir folder(path);
    QStringList photos;
    for (const QString &name : folder.entryList(QDir::Files, QDir::Name)) {
        const QString file = folder.filePath(name);
        QString reason;
        if (QImageReader::imageFormat(file).isEmpty())
            continue; // something else, and none of our business
        if (BWPhotoSource::canShow(file, reason))
            photos << file;
        else
            qCWarning(bwMedia) << "The photo" << file << "is left out:" << reason;
    }
    if (photos.isEmpty()) {
        error = QStringLiteral("%1 holds no photos").arg(path);
        return nullptr;
    }
    return std::make_unique<BWPhotoSource>(photos);
}

std::unique_ptr<BWPictureSource> fromFile(const QString &path, QString &error)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool bareMovie = suffix == QLatin1String("mjpeg") || suffix == QLatin1String("mjpg"); // begins like a photo
    QString reason;
    if (!bareMovie && !QImageReader::imageFormat(path).isEmpty()) {
        if (BWPhotoSource::canShow(path, reason))
            return std::make_unique<BWPhotoSource>(QStringList{path});
    } else if (std::unique_ptr<BWMovieReader> reader = BWMovieReader::open(path, reason)) {
        return std::make_unique<BWMovieSource>(std::move(reader));
    }
    error = QStringLiteral("%1 cannot be shown: %2").arg(path, reason);
    return nullptr;
}

} // namespace

std::unique_ptr<BWPictureSource> makePictureSource(const QString &path, QString *error)
{
    if (path.isEmpty())
        return std::make_unique<BWSpecimenSource>();
    QString reason;
    std::unique_ptr<BWPictureSource> source;
    const QFileInfo info(path);
    if (!info.exists())
        reason = QStringLiteral("%1 does not exist").arg(path);
    else if (!info.isFile() && !info.isDir()) // to read a pipe would mean to wait for whoever writes into it
        reason = QStringLiteral("%1 is neither a regular file nor a folder").arg(path);
    else
        source = info.isDir() ? fromFolder(path, reason) : fromFile(path, reason);
    if (!source && error)
        *error = reason;
    return source;
}
