// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWCaptureRecovery.h"

#include "BWACUDriver/BWDiskSpace.h"
#include "BWACUDriver/BWMovie.h"
#include "Model/Thumbnails/BWJpegPicture.h"
#include "Model/Thumbnails/BWThumbnailMaker.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWTemporaryFiles.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <QFile>
#include <QRegularExpression>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int snapshotAge = 10; // seconds; a running program may be about to claim a younger one
constexpr int halfCopyAge = 3600; // seconds without a byte written
constexpr off_t sparseSize = 1 << 20; // bytes; smaller files may be kept without blocks of their own

/// A date in the future, from before the clock was set right, is as good as one long ago.
bool changedWithin(const struct stat &info, int seconds, const QDateTime &now)
{
    return std::abs(now.toSecsSinceEpoch() - info.st_mtim.tv_sec) < seconds;
}

bool haveSameBytes(int file, const QByteArray &path)
{
    constexpr qint64 step = 1 << 20;
    QFile first;
    QFile second;
    const int other = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (other < 0 || !second.open(other, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)
        || !first.open(file, QIODevice::ReadOnly) || !first.seek(0))
        return false;
    while (!first.atEnd()) {
        const QByteArray bytes = first.read(step);
        if (bytes.isEmpty() || bytes != second.read(step))
            return false;
    }
    return true;
}

/// A copy keeps the capture's date, so only few files need to be read.
bool isIn(const QUrl &album, int file, const struct stat &info, const QByteArray &ending)
{
    const QList<QByteArray> names = BWFilePath::entries(album).value_or(QList<QByteArray>());
    return std::any_of(names.begin(), names.end(), [&](const QByteArray &name) {
        const QByteArray path = BWFilePath::native(album) + '/' + name;
        struct stat there;
        return name.endsWith(ending) && ::stat(path.constData(), &there) == 0 && S_ISREG(there.st_mode)
            && there.st_size == info.st_size && there.st_mtim.tv_sec == info.st_mtim.tv_sec
            && haveSameBytes(file, path);
    });
}

/// One folder in which captures were left.
class Place {
public:
    /// No other user can reach into a private folder.
    enum class Kind { Private, Shared };

    /// The open folder is closed with the place.
    Place(int folder, QByteArray path, Kind kind, const QUrl &album, const QDateTime &now)
        : m_folder(folder), m_path(std::move(path)), m_kind(kind), m_album(album), m_now(now)
    {
    }
    ~Place() { ::close(m_folder); }
    Place(const Place &) = delete;
    Place &operator=(const Place &) = delete;

    /// The names of what may be captures. None if nothing can be removed: the same would come again at each start.
    QList<QByteArray> names() const;
    /// Nanoseconds since 1970.
    qint64 modified(const QByteArray &name) const;

    /// Nothing if it is not a capture of ours, or not to be taken now. `toCome` counts the bytes that the album's disk
    /// has to take.
    std::optional<BWOrphanedCapture> take(const QByteArray &name, uint64_t &toCome) const;

private:
    bool isOurs(const struct stat &info) const;
    bool isWhole(const BWFileClaim &claim, const QByteArray &name) const;
    QString obstacle(const struct stat &info, uint64_t &toCome) const;
    void remove(const QByteArray &name) const { ::unlinkat(m_folder, name.constData(), 0); }
    void refuse(const QByteArray &name, const QString &reason) const
    {
        qCWarning(bwModel).noquote() << "A capture that was left behind cannot be taken over:"
                                     << BWFilePath::url(m_path + '/' + name).toDisplayString() << '-' << reason;
    }

    const int m_folder;
    const QByteArray m_path;
    const Kind m_kind;
    const QUrl &m_album;
    const QDateTime &m_now;
};

QList<QByteArray> Place::names() const
{
    static const QRegularExpression ours(u"^brimwellpro-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.(jpg|mov)$"_s);
    if (::faccessat(m_folder, ".", W_OK | X_OK, AT_EACCESS) != 0)
        return {};
    QList<QByteArray> names = BWFilePath::entries(BWFilePath::url(m_path)).value_or(QList<QByteArray>());
    names.removeIf([](const QByteArray &name) { return !ours.match(QString::fromLatin1(name)).hasMatch(); });
    return names;
}

qint64 Place::modified(const QByteArray &name) const
{
    constexpr qint64 second = 1'000'000'000;
    struct stat info { };
    ::fstatat(m_folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW);
    return info.st_mtim.tv_sec * second + info.st_mtim.tv_nsec;
}

/// With a second name elsewhere, or rights for everybody, others could still change it, or bring back a deleted one.
bool Place::isOurs(const struct stat &info) const
{
    return S_ISREG(info.st_mode) && info.st_uid == ::geteuid() && info.st_nlink == 1
        && (m_kind == Kind::Private || (info.st_mode & S_IWOTH) == 0);
}

std::optional<BWOrphanedCapture> Place::take(const QByteArray &name, uint64_t &toCome) const
{
    struct stat info;
    if (::fstatat(m_folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    if (m_kind == Kind::Private && S_ISREG(info.st_mode) && info.st_nlink > 1) {
        remove(name); // has come into an album, and may since have been moved or deleted there
        return std::nullopt;
    }
    const bool isMovie = name.endsWith(".mov");
    const bool mayBeBegun = changedWithin(info, snapshotAge, m_now) && (!isMovie || info.st_size == 0);
    if (!isOurs(info) || mayBeBegun)
        return std::nullopt;
    const std::shared_ptr<BWFileClaim> claim = BWFileClaim::existing(m_folder, name);
    // Again, as the name may stand for another file since.
    if (!claim || ::fstat(claim->descriptor(), &info) != 0 || !isOurs(info))
        return std::nullopt;
    if (info.st_size == 0 || isIn(m_album, claim->descriptor(), info, name.right(4))) {
        remove(name);
        return std::nullopt;
    }
    if (const QString reason = obstacle(info, toCome); !reason.isNull()) {
        refuse(name, reason);
        return std::nullopt;
    }
    if (!isWhole(*claim, name))
        return std::nullopt;
    return BWOrphanedCapture{BWFilePath::url(m_path + '/' + name), isMovie ? BWMediaType::Video : BWMediaType::Image,
                             claim};
}

/// Null if the album's disk has room for it, of which the file's own disk needs none.
QString Place::obstacle(const struct stat &info, uint64_t &toCome) const
{
    constexpr int blockSize = 512;
    if (info.st_size > sparseSize && info.st_blocks * blockSize < info.st_size / 2)
        return u"most of it is a hole"_s;
    struct stat folder;
    const QByteArray folderPath = BWFilePath::native(m_album);
    if (::stat(folderPath.constData(), &folder) != 0 || folder.st_dev == info.st_dev)
        return {};
    toCome += static_cast<uint64_t>(info.st_size);
    if (!BWDiskSpace::isNearlyFull(folderPath, toCome))
        return {};
    toCome -= static_cast<uint64_t>(info.st_size);
    return u"the album's disk has no room for it"_s;
}

/// Whether it can be decoded; a movie is completed first, and removed if it is empty.
bool Place::isWhole(const BWFileClaim &claim, const QByteArray &name) const
{
    // This very file, whatever its name stands for by then.
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(claim.descriptor());
    QString error;
    if (!name.endsWith(".mov")) {
        const BWThumbnailFile file(path);
        std::vector<uint8_t> bytes;
        const bool isPicture = file.isOpen() && file.read(bytes, BWJpegPicture::largestFile)
            && !BWJpegPicture().thumbnail(bytes, BWThumbnailSize::Normal, &error).isNull();
        if (!isPicture)
            refuse(name, error.isEmpty() ? u"it is no picture"_s : error);
        return isPicture;
    }
    const BWMovieCompletion completion = completeMovie(QFile::decodeName(path), &error);
    if (completion == BWMovieCompletion::Empty) {
        remove(name);
        return false;
    }
    const bool isMovie = completion != BWMovieCompletion::Failed
        && BWMoviePicture::read(claim.descriptor(), {16, 16}, &error).has_value();
    if (!isMovie)
        refuse(name, error);
    return isMovie;
}

} // namespace

QList<BWOrphanedCapture> BWOrphanedCaptures::collect(const QStringList &temporaryFolders, const QUrl &album,
                                                     const QDateTime &now)
{
    struct Left {
        const Place *place;
        QByteArray name;
        qint64 modified;
    };
    std::vector<std::unique_ptr<Place>> places;
    for (const QString &parent : temporaryFolders) {
        const QByteArray path = QFile::encodeName(parent);
        const int shared = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (shared >= 0)
            places.push_back(std::make_unique<Place>(shared, path, Place::Kind::Shared, album, now));
        for (const BWPrivateFolder &folder : BWPrivateFolder::all(path)) {
            const int own = ::fcntl(folder.descriptor(), F_DUPFD_CLOEXEC, 0);
            places.push_back(std::make_unique<Place>(own, folder.path(), Place::Kind::Private, album, now));
        }
    }
    std::vector<Left> left;
    for (const auto &place : places) {
        for (const QByteArray &name : place->names())
            left.push_back({place.get(), name, place->modified(name)});
    }
    std::stable_sort(left.begin(), left.end(), [](const Left &a, const Left &b) { return a.modified < b.modified; });

    QList<BWOrphanedCapture> found;
    uint64_t toCome = 0;
    for (const Left &file : left) {
        if (const auto capture = file.place->take(file.name, toCome))
            found.append(*capture);
    }
    return found;
}

void BWOrphanedCaptures::removeHalfCopies(const QUrl &album, const QDateTime &now)
{
    static const QRegularExpression half(
        u"^\\.[0-9]{8}_(image|video)_[0-9]+( .*)?\\.(jpg|mov)\\.[0-9a-f]{8}\\.part$"_s);
    const QList<QByteArray> names = BWFilePath::entries(album).value_or(QList<QByteArray>());
    for (const QByteArray &name : names) {
        const QByteArray path = BWFilePath::native(album) + '/' + name;
        struct stat info;
        if (half.match(QString::fromLatin1(name)).hasMatch() && ::lstat(path.constData(), &info) == 0
            && S_ISREG(info.st_mode) && !changedWithin(info, halfCopyAge, now))
            ::unlink(path.constData());
    }
}

BWCaptureRecovery::BWCaptureRecovery(BWAlbumManager &albums, std::function<void(int, const QUrl &)> recovered)
    : m_albums(albums), m_recovered(std::move(recovered))
{
}

void BWCaptureRecovery::start(const QStringList &temporaryFolders)
{
    for (const BWAlbumPtr &any : m_albums.albums())
        m_sweeper.run([path = any->path()] { BWOrphanedCaptures::removeHalfCopies(path); });
    const BWAlbumPtr album = m_albums.currentAlbum();
    if (!album)
        return;
    m_worker.run([this, alive = m_alive.watch(), temporaryFolders, path = album->path()] {
        const QList<BWOrphanedCapture> captures = BWOrphanedCaptures::collect(temporaryFolders, path);
        if (!captures.isEmpty())
            BWMainQueue::post(alive, [this, captures] { takeIn(captures); });
    });
}

void BWCaptureRecovery::takeIn(const QList<BWOrphanedCapture> &captures)
{
    m_waiting = captures.size();
    for (const BWOrphanedCapture &capture : captures) {
        m_albums.addFile(capture.file, capture.type,
                         [this, alive = m_alive.watch(), capture](bool added, const QUrl &file) {
                             if (!alive.expired())
                                 takenIn(added, capture, file);
                         });
    }
}

void BWCaptureRecovery::takenIn(bool added, const BWOrphanedCapture &capture, const QUrl &file)
{
    if (added) {
        qCInfo(bwModel).noquote() << "A capture of an earlier run came into the album as" << file.toLocalFile();
        if (!QFile::remove(capture.file.toLocalFile()))
            qCWarning(bwModel).noquote() << "The temporary file cannot be removed:" << capture.file.toLocalFile();
        ++m_count;
        m_last = file;
    }
    if (--m_waiting == 0 && m_count > 0)
        m_recovered(m_count, m_last);
}
