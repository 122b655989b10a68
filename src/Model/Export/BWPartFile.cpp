// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWPartFile.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWTemporaryFiles.h"
#include "Utils/BWUIUtils.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <QFile>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString prefix = u"export"_s;

/// What distinguishes a file from one that takes its name later; null unless it is a regular file. Its date of
/// creation, as some disks number their files differently each time they are plugged in.
QByteArray identity(int folder, const QByteArray &path, int flags)
{
    struct statx info;
    if (::statx(folder, path.constData(), flags, STATX_TYPE | STATX_INO | STATX_BTIME, &info) != 0
        || !S_ISREG(info.stx_mode))
        return {};
    if ((info.stx_mask & STATX_BTIME) != 0)
        return "made " + QByteArray::number(qlonglong(info.stx_btime.tv_sec)) + '.'
            + QByteArray::number(info.stx_btime.tv_nsec);
    return "number " + QByteArray::number(qulonglong(info.stx_ino));
}

/// Whether the file may be a part whose program was killed before it could say more of it than its name: nothing is in it
/// yet, and it was made when the note was, as far as the clocks of two disks agree.
bool mayBeJustMade(const QByteArray &part, time_t noted)
{
    constexpr time_t tolerance = 60; // seconds; a disk may have to wake up first
    struct stat info;
    return ::lstat(part.constData(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size == 0
        && std::abs(info.st_mtim.tv_sec - noted) <= tolerance;
}

/// Removes the part that an unclaimed note is about. Whether the note has served its purpose.
bool follow(const QByteArray &note, time_t noted, const QByteArray &folder)
{
    const qsizetype end = note.indexOf('\0');
    if (end < 0)
        return true; // its program was killed as it began
    const QByteArray part = note.left(end);
    if (part.left(part.lastIndexOf('/') + 1) != folder)
        return false; // that part may be on a disk that does not answer
    const QByteArray known = note.mid(end + 1);
    const bool isOurs =
        known.isEmpty() ? mayBeJustMade(part, noted) : identity(AT_FDCWD, part, AT_SYMLINK_NOFOLLOW) == known;
    if (isOurs && ::unlink(part.constData()) == 0)
        qCInfo(bwModel).noquote() << "Removed what an interrupted export had left:"
                                  << BWFilePath::url(part).toDisplayString();
    return true;
}

constexpr int mostAttempts = 10'000;

/// At most that many bytes of a name, without cutting a character in two.
QByteArray shortened(const QByteArray &name, qint64 length)
{
    if (name.size() <= length)
        return name;
    while (length > 0 && (name[length] & 0xc0) == 0x80)
        --length;
    return name.left(length);
}

} // namespace

BWPartNote::BWPartNote(const QByteArray &part)
    : m_path(BWFilePath::native(BWUIUtils::temporaryPath(prefix, u"part"_s))),
      m_claim(BWFileClaim::create(QFile::decodeName(m_path)))
{
    const qsizetype size = part.size() + 1; // with the zero that ends it
    if (m_claim && ::write(m_claim->descriptor(), part.constData(), std::size_t(size)) != size)
        m_claim.reset();
}

void BWPartNote::partIsOpen(int descriptor)
{
    const QByteArray known = identity(descriptor, {}, AT_EMPTY_PATH);
    if (m_claim && ::write(m_claim->descriptor(), known.constData(), std::size_t(known.size())) != known.size())
        m_claim.reset();
}

BWPartNote::~BWPartNote()
{
    ::unlink(m_path.constData());
}

void BWPartNote::clearParts(const QByteArray &folder)
{
    for (const QString &parent : BWUIUtils::temporaryFolders()) {
        for (const BWPrivateFolder &notes : BWPrivateFolder::all(QFile::encodeName(parent))) {
            const auto names = BWFilePath::entries(BWFilePath::url(notes.path())).value_or(QList<QByteArray>());
            for (const QByteArray &name : names) {
                if (!name.startsWith(prefix.toLatin1()) || !name.endsWith(".part"))
                    continue;
                const auto claim = BWFileClaim::existing(notes.descriptor(), name);
                std::array<char, std::size_t{2} * PATH_MAX> bytes;
                const ssize_t size = claim ? ::pread(claim->descriptor(), bytes.data(), bytes.size(), 0) : -1;
                struct stat info;
                if (size >= 0 && ::fstat(claim->descriptor(), &info) == 0
                    && follow(QByteArray(bytes.data(), size), info.st_mtim.tv_sec, folder))
                    ::unlinkat(notes.descriptor(), name.constData(), 0);
            }
        }
    }
}

BWPartFile::BWPartFile(const QUrl &target) : m_target(BWFilePath::normalized(target))
{
    const QByteArray path = BWFilePath::native(m_target);
    const qsizetype slash = path.lastIndexOf('/');
    m_folder = path.left(slash + 1);
    m_name = path.mid(slash + 1);
}

BWPartFile::~BWPartFile()
{
    discard();
}

QByteArray BWPartFile::partName(int attempt) const
{
    const QByteArray ending = BWFilePath::numberSuffix(attempt) + ".part";
    return shortened(m_name, m_longestName - ending.size()) + ending;
}

bool BWPartFile::create(mode_t rights)
{
    if (m_name.isEmpty()) {
        errno = EISDIR;
        return false;
    }
    struct stat info;
    const bool taken = ::lstat((m_folder + m_name).constData(), &info) == 0;
    if (taken && S_ISDIR(info.st_mode))
        errno = EISDIR;
    if ((taken ? S_ISDIR(info.st_mode) : errno == ENAMETOOLONG)
        || ::faccessat(AT_FDCWD, m_folder.constData(), W_OK | X_OK, AT_EACCESS) != 0)
        return false;
    if (const long longest = ::pathconf(m_folder.constData(), _PC_NAME_MAX); longest > 0)
        m_longestName = longest;
    BWPartNote::clearParts(m_folder);
    for (int attempt = 1; attempt < mostAttempts; ++attempt) {
        const QByteArray part = m_folder + partName(attempt);
        if (::lstat(part.constData(), &info) == 0)
            continue;
        m_note.emplace(part); // first, so that a kill leaves no part without one
        m_descriptor = ::open(part.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, rights);
        if (m_descriptor >= 0) {
            m_part = part; // what is not ours is never removed
            m_note->partIsOpen(m_descriptor);
            return true;
        }
        const int reason = errno;
        m_note.reset();
        errno = reason;
        if (reason != EEXIST)
            return false;
    }
    return false;
}

bool BWPartFile::writeAt(qint64 offset, const char *bytes, qint64 size)
{
    return BWFileBytes::writeAt(m_descriptor, offset, bytes, size) && written(offset + size);
}

bool BWPartFile::complete(const std::optional<timespec> &modified)
{
    if (modified) {
        const timespec times[]{{0, UTIME_OMIT}, *modified};
        ::futimens(m_descriptor, times); // a disk of another user may refuse
    }
    if (!BWFileBytes::synchronize(m_descriptor) || ::close(std::exchange(m_descriptor, -1)) != 0
        || ::rename(m_part.constData(), (m_folder + m_name).constData()) != 0)
        return false;
    m_part.clear();
    m_note.reset();
    BWFileBytes::synchronizeFolder(m_folder);
    return true;
}

QUrl BWPartFile::keep()
{
    struct stat info;
    if (m_part.isEmpty() || ::stat(m_part.constData(), &info) != 0 || info.st_size == 0) {
        discard();
        return {};
    }
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
    m_note.reset();
    return BWFilePath::url(std::exchange(m_part, {}));
}

void BWPartFile::discard()
{
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
    if (!m_part.isEmpty())
        ::unlink(m_part.constData());
    m_part.clear();
    m_note.reset();
}
