#include "Model/Capture/BWLeftCaptures.h"

#include "BWACUDriver/BWMovieCompletion.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int snapshotAge = 10; // seconds; a running program may be about to claim a younger one
constexpr int halfCopyAge = 3600; // seconds without a byte written

bool isSameFile(const QUrl &a, const QUrl &b)
{
    struct stat first, second;
    return ::stat(BWFilePath::native(a).constData(), &first) == 0
        && ::stat(BWFilePath::native(b).constData(), &second) == 0 && first.st_dev == second.st_dev
        && first.st_ino == second.st_ino;
}

bool haveSameBytes(const QString &a, const QString &b)
{
    constexpr qint64 step = 1 << 20;
    QFile first(a);
    QFile second(b);
    if (first.size() != second.size() || !first.open(QIODevice::ReadOnly) || !second.open(QIODevice::ReadOnly))
        return false;
    while (!first.atEnd()) {
        const QByteArray bytes = first.read(step);
        if (bytes.isEmpty() || bytes != second.read(step))
            return false;
    }
    return true;
}

/// A copy keeps the capture's date, so only few files need to be read.
bool isIn(const QUrl &album, const QFileInfo &capture)
{
    const QFileInfoList files = QDir(album.toLocalFile()).entryInfoList({u"*."_s + capture.suffix()}, QDir::Files);
    return std::any_of(files.begin(), files.end(), [&capture](const QFileInfo &file) {
        if (isSameFile(QUrl::fromLocalFile(capture.filePath()), QUrl::fromLocalFile(file.filePath())))
            return true;
        return file.lastModified().secsTo(capture.lastModified()) == 0
            && haveSameBytes(capture.filePath(), file.filePath());
    });
}

/// Whether it can be played now.
bool completed(const QString &path)
{
    QString error;
    switch (completeMovie(path, &error)) {
    case BWMovieCompletion::Completed:
    case BWMovieCompletion::Plain:
        return true;
    case BWMovieCompletion::Empty:
        QFile::remove(path);
        return false;
    case BWMovieCompletion::Failed:
        qCWarning(bwModel).noquote() << "A recording that was left behind cannot be completed:" << path << "-" << error;
        return false;
    }
    return false;
}

} // namespace

QList<BWLeftCapture> BWLeftCaptures::collect(const QString &temporaryFolder, const QUrl &album, const QDateTime &now)
{
    static const QRegularExpression ours(u"^brimwellpro-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.(jpg|mov)$"_s);
    QList<BWLeftCapture> found;
    const QFileInfoList files =
        QDir(temporaryFolder)
            .entryInfoList({u"brimwellpro-*"_s}, QDir::Files | QDir::NoSymLinks, QDir::Time | QDir::Reversed);
    for (const QFileInfo &file : files) {
        if (!ours.match(file.fileName()).hasMatch() || !file.isReadable() || !file.isWritable())
            continue;
        const bool isMovie = file.suffix() == u"mov"_s;
        if (file.size() == 0 || (!isMovie && file.lastModified().secsTo(now) < snapshotAge))
            continue;
        const std::shared_ptr<BWFileClaim> claim = BWFileClaim::existing(file.filePath());
        if (!claim)
            continue;
        if (isIn(album, file)) {
            QFile::remove(file.filePath());
            continue;
        }
        if (!isMovie || completed(file.filePath()))
            found.append(
                {QUrl::fromLocalFile(file.filePath()), isMovie ? BWMediaType::Video : BWMediaType::Image, claim});
    }
    return found;
}

void BWLeftCaptures::removeHalfCopies(const QUrl &album, const QDateTime &now)
{
    static const QRegularExpression half(u"^\\.[0-9]{8}_(image|video)_[0-9]+\\.(jpg|mov)\\.[0-9a-f]{8}\\.part$"_s);
    const QFileInfoList files =
        QDir(album.toLocalFile()).entryInfoList({u".*.part"_s}, QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QFileInfo &file : files) {
        if (half.match(file.fileName()).hasMatch() && file.lastModified().secsTo(now) > halfCopyAge)
            QFile::remove(file.filePath());
    }
}
