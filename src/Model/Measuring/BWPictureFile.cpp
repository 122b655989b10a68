// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWPictureFile.h"

#include "BWACUDriver/BWFileBytes.h"
#include "Model/Export/BWExportResult.h"
#include "Model/Export/BWExportSource.h"
#include "Model/Export/BWPartFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <cerrno>
#include <new>
#include <QCryptographicHash>
#include <QFile>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// No picture is larger.
constexpr qint64 largestPicture = 512 << 20;

QByteArray fingerprintOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
}

/// Null, with the reason in `errno`, if it cannot be read.
QByteArray bytesOf(const std::shared_ptr<const BWExportSource> &source)
{
    if (!source)
        return {};
    if (source->size() > largestPicture) {
        errno = EFBIG;
        return {};
    }
    QByteArray bytes(source->size(), Qt::Uninitialized);
    if (source->readAt(0, bytes.data(), bytes.size()))
        return bytes;
    errno = errno == 0 ? EBUSY : errno; // it becomes shorter meanwhile
    return {};
}

BWPictureFile::Saved pictureUnread(const QUrl &file)
{
    const BWExportResult result = BWExportResult::sourceFailed(file, errno);
    return {result.problem == BWExportResult::Problem::SourceGone ? BWPictureProblem::Gone
                                                                  : BWPictureProblem::Unreadable,
            result.reason,
            {}};
}

BWPictureFile::Saved pictureUnwritten(const QUrl &file)
{
    using Export = BWExportResult::Problem;
    const BWExportResult result = BWExportResult::targetFailed(file, errno);
    const bool isFull = result.problem == Export::TargetFull || result.problem == Export::TargetTooLarge;
    const bool isRefused = result.problem == Export::TargetNotWritable || result.problem == Export::TargetReadOnly;
    return {isFull          ? BWPictureProblem::DiskFull
                : isRefused ? BWPictureProblem::NotWritable
                            : BWPictureProblem::Failed,
            result.reason,
            {}};
}

/// What is not in the bytes of a file. Where the disk or the user's rights do not allow it, the new file does without.
void copyAttributes(int from, int to)
{
    struct stat info;
    if (::fstat(from, &info) != 0)
        return;
    // The rights last: a change of the owner takes some away.
    const bool isOwned =
        ::fchown(to, info.st_uid, info.st_gid) == 0 || ::fchown(to, static_cast<uid_t>(-1), info.st_gid) == 0;
    Q_UNUSED(isOwned) // it may not be allowed
    ::fchmod(to, info.st_mode & 07777);
    QByteArray names(64 << 10, '\0');
    const ssize_t length = ::flistxattr(from, names.data(), static_cast<size_t>(names.size()));
    for (const QByteArray &name : names.first(std::max<ssize_t>(length, 0)).split('\0')) {
        QByteArray value(64 << 10, '\0');
        const ssize_t size = name.startsWith("user.")
            ? ::fgetxattr(from, name.constData(), value.data(), static_cast<size_t>(value.size()))
            : -1;
        if (size >= 0)
            ::fsetxattr(to, name.constData(), value.constData(), static_cast<size_t>(size), 0);
    }
}

BWFileIdentity identityOf(int descriptor)
{
    struct stat info;
    if (::fstat(descriptor, &info) != 0)
        return {};
    return {info.st_dev, info.st_ino};
}

/// The path without links; empty, with the reason in `errno`, if nothing is there.
QByteArray realPath(const QByteArray &path)
{
    char *const real = ::realpath(path.constData(), nullptr);
    QByteArray found(real);
    std::free(real);
    return found;
}

/// The same for a file that may have another name by now.
QByteArray realPath(const QByteArray &path, const BWFileIdentity &identity)
{
    QByteArray found = realPath(path);
    if (!found.isEmpty() || errno != ENOENT || identity.number == 0)
        return found;
    const QByteArray folder = path.left(path.lastIndexOf('/') + 1);
    const auto names = BWFilePath::entries(BWFilePath::url(folder)).value_or(QList<QByteArray>());
    for (const QByteArray &name : names) {
        struct stat info;
        const bool isThere = ::lstat((folder + name).constData(), &info) == 0 && S_ISREG(info.st_mode);
        if (isThere && BWFileIdentity{info.st_dev, info.st_ino} == identity)
            return realPath(folder + name);
    }
    errno = ENOENT;
    return {};
}

BWPictureFile::Saved savedPicture(const QUrl &link, const BWPictureMetadata &metadata, const QByteArray &fingerprint,
                                  const BWFileIdentity &identity)
{
    // A new file in place of a link would leave the picture that it leads to as it is.
    const QByteArray path = realPath(BWFilePath::native(link), identity);
    if (path.isEmpty())
        return pictureUnread(link);
    const QUrl file = BWFilePath::url(path);
    const auto source = BWExportSource::open(file);
    const QByteArray before = bytesOf(source);
    if (before.isNull())
        return pictureUnread(file);
    if (fingerprintOf(before) != fingerprint)
        return {BWPictureProblem::Changed, u"its bytes are others than were read"_s, {}};
    struct stat info;
    if (::fstat(source->descriptor(), &info) != 0 || (info.st_mode & 0222) == 0
        || ::access(path.constData(), W_OK) != 0)
        return {BWPictureProblem::NotWritable, u"the file is read-only"_s, {}};

    const BWPictureMetadata::Written written = metadata.addedTo(before);
    if (written.problem != BWPictureProblem::None)
        return {written.problem, written.detail, {}};
    if (written.jpeg == before)
        return {BWPictureProblem::None, {}, fingerprint, identityOf(source->descriptor())};
    BWPartFile part(file);
    // At no moment may others read what they could not before.
    if (!part.create(info.st_mode & 0600) || !part.writeAt(0, written.jpeg.constData(), written.jpeg.size()))
        return pictureUnwritten(file);
    copyAttributes(source->descriptor(), part.descriptor());
    // What takes long comes before the last look at the old file, which may be renamed or moved to the Trash meanwhile.
    if (!BWFileBytes::synchronizeData(part.descriptor())) // which the kernel would not say again
        return pictureUnwritten(file);
    if (!source->isUnchanged() || !source->isAt(path))
        return {BWPictureProblem::Changed, u"it changed while it was saved"_s, {}};
    const BWFileIdentity now = identityOf(part.descriptor());
    if (!part.complete())
        return pictureUnwritten(file);
    return {BWPictureProblem::None, {}, fingerprintOf(written.jpeg), now};
}

BWPictureFile::Read readPicture(const QUrl &file)
{
    const auto source = BWExportSource::open(file);
    const QByteArray bytes = bytesOf(source);
    BWPictureFile::Read read;
    if (bytes.isNull()) {
        const BWPictureFile::Saved failure = pictureUnread(file);
        read.problem = failure.problem;
        read.detail = failure.detail;
    } else {
        static_cast<BWPictureMetadata::Read &>(read) = BWPictureMetadata::from(bytes);
        read.fingerprint = fingerprintOf(bytes);
        read.identity = identityOf(source->descriptor());
        if (read.problem != BWPictureProblem::NotJpeg)
            read.turn = BWJpegPicture::turnOf(
                {reinterpret_cast<const uint8_t *>(bytes.constData()), std::size_t(bytes.size())});
    }
    return read;
}

} // namespace

BWPictureFile::Read BWPictureFile::read(const QUrl &file)
{
    Read read;
    try {
        read = readPicture(file);
    } catch (const std::bad_alloc &) {
        read.problem = BWPictureProblem::Unreadable;
        read.detail = u"there is no memory for it"_s;
    }
    if (read.problem != BWPictureProblem::None && read.problem != BWPictureProblem::NotJpeg)
        qCWarning(bwModel).noquote() << "Measurements in" << file.toDisplayString() << '-' << read.detail;
    return read;
}

BWPictureFile::Saved BWPictureFile::save(const QUrl &file, const BWPictureMetadata &metadata,
                                         const QByteArray &fingerprint, const BWFileIdentity &identity)
{
    Saved result;
    try {
        result = savedPicture(file, metadata, fingerprint, identity);
    } catch (const std::bad_alloc &) {
        errno = ENOMEM;
        result = pictureUnwritten(file);
    }
    if (result.problem != BWPictureProblem::None)
        qCWarning(bwModel).noquote() << "Measurements cannot be saved in" << file.toDisplayString() << '-'
                                     << result.detail;
    return result;
}

QString BWPictureFile::problemText(BWPictureProblem problem, BWLocalizationManager &texts)
{
    switch (problem) {
    case BWPictureProblem::None:
        break;
    case BWPictureProblem::Partly:
        return texts.text(u"measuring"_s, u"file_partly"_s,
                          u"Some of the measurements in this picture cannot be read. They stay in its file."_s);
    case BWPictureProblem::NotJpeg:
        return texts.text(u"measuring"_s, u"file_not_jpeg"_s,
                          u"This file is not a JPEG picture, so it cannot hold measurements."_s);
    case BWPictureProblem::Damaged:
        return texts.text(u"measuring"_s, u"file_damaged"_s,
                          u"This picture is damaged, so measurements can neither be read from it nor saved in it."_s);
    case BWPictureProblem::DescriptionDamaged:
        return texts.text(
            u"measuring"_s, u"file_description_damaged"_s,
            u"The description in this picture’s file is damaged, so measurements can neither be read from "
            "it nor saved in it."_s);
    case BWPictureProblem::Newer:
        return texts.text(u"measuring"_s, u"file_newer"_s,
                          u"The measurements in this picture are from a newer version of BrimwellPro. Please use that "
                          "version."_s);
    case BWPictureProblem::NoRoom:
        return texts.text(u"measuring"_s, u"file_no_room"_s,
                          u"What other programs have written into this picture’s file leaves no room for "
                          "measurements."_s);
    case BWPictureProblem::Changed:
        return texts.text(u"measuring"_s, u"file_changed"_s,
                          u"Another program has changed this picture. Please open it again before you save."_s);
    case BWPictureProblem::Gone:
        return texts.text(u"measuring"_s, u"file_gone"_s,
                          u"The picture is no longer there. It may have been moved, renamed or removed."_s);
    case BWPictureProblem::Unreadable:
        return texts.text(u"measuring"_s, u"file_unreadable"_s,
                          u"The picture cannot be read. Please check that you have permission to read it, and that its "
                          "disk works."_s);
    case BWPictureProblem::NotWritable:
        return texts.text(u"measuring"_s, u"file_not_writable"_s,
                          u"The picture could not be changed. Please check that you have write permission for it and "
                          "its folder."_s);
    case BWPictureProblem::DiskFull:
        return texts.text(u"measuring"_s, u"file_disk_full"_s,
                          u"There is not enough free space on the disk. The picture is as it was."_s);
    case BWPictureProblem::Failed:
        return texts.text(
            u"measuring"_s, u"file_failed"_s,
            u"The measurements could not be saved, for an unexpected reason. The picture is as it was."_s);
    }
    return {};
}
