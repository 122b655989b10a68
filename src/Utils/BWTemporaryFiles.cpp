// SPDX-License-Identifier: GPL-3.0-or-later
#include "Utils/BWTemporaryFiles.h"

#include "Utils/BWFilePath.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <QCryptographicHash>
#include <QDir>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

QByteArray plainName()
{
    const QByteArray home = QCryptographicHash::hash(QFile::encodeName(QDir::homePath()), QCryptographicHash::Sha1);
    return "brimwellpro-" + QByteArray::number(::geteuid()) + '-' + home.toHex().left(8);
}

/// In a folder that everybody may write to, without the sticky bit, anybody could move ours away.
bool isSafe(const QByteArray &parent)
{
    struct stat info;
    return ::stat(parent.constData(), &info) == 0 && S_ISDIR(info.st_mode)
        && ((info.st_mode & S_IWOTH) == 0 || (info.st_mode & S_ISVTX) != 0);
}

bool canBeWritten(const BWPrivateFolder &folder)
{
    return ::faccessat(folder.descriptor(), ".", W_OK | X_OK, AT_EACCESS) == 0;
}

} // namespace

BWPrivateFolder::BWPrivateFolder(QByteArray path, int descriptor)
    : m_path(std::move(path)), m_descriptor(descriptor) { }

BWPrivateFolder::BWPrivateFolder(BWPrivateFolder &&other) noexcept
    : m_path(std::move(other.m_path)), m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

BWPrivateFolder::~BWPrivateFolder()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

std::optional<BWPrivateFolder> BWPrivateFolder::open(const QByteArray &path)
{
    const int descriptor = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    BWPrivateFolder folder(path, descriptor);
    struct stat info;
    constexpr mode_t rights = 0777;
    if (::fstat(descriptor, &info) != 0 || info.st_uid != ::geteuid() || (info.st_mode & rights) != 0700)
        return std::nullopt;
    return folder;
}

std::optional<BWPrivateFolder> BWPrivateFolder::make(const QByteArray &parent)
{
    if (!isSafe(parent))
        return std::nullopt;
    QByteArray path = parent + '/' + plainName();
    const bool made = ::mkdir(path.constData(), 0700) == 0;
    if (auto folder = open(path); folder && canBeWritten(*folder))
        return folder;
    if (made) { // on a disk without access rights
        ::rmdir(path.constData());
        return std::nullopt;
    }
    for (BWPrivateFolder &folder : all(parent)) {
        if (canBeWritten(folder))
            return std::move(folder);
    }
    path += "-XXXXXX"; // which nobody can guess and take first
    return ::mkdtemp(path.data()) ? open(path) : std::nullopt;
}

std::vector<BWPrivateFolder> BWPrivateFolder::all(const QByteArray &parent)
{
    const QByteArray plain = plainName();
    std::vector<BWPrivateFolder> found;
    QList<QByteArray> names = BWFilePath::entries(BWFilePath::url(parent)).value_or(QList<QByteArray>());
    std::sort(names.begin(), names.end());
    for (const QByteArray &name : std::as_const(names)) {
        if (name != plain && !name.startsWith(plain + '-'))
            continue;
        if (auto folder = open(parent + '/' + name))
            found.push_back(std::move(*folder));
    }
    return found;
}

std::shared_ptr<BWFileClaim> BWFileClaim::create(const QString &path)
{
    return open(AT_FDCWD, QFile::encodeName(path), O_CREAT);
}

std::shared_ptr<BWFileClaim> BWFileClaim::existing(const QString &path)
{
    return open(AT_FDCWD, QFile::encodeName(path), 0);
}

std::shared_ptr<BWFileClaim> BWFileClaim::existing(int folder, const QByteArray &name)
{
    return open(folder, name, 0);
}

BWFileClaim::~BWFileClaim()
{
    ::close(m_descriptor);
}

std::shared_ptr<BWFileClaim> BWFileClaim::open(int folder, const QByteArray &path, int flags)
{
    const int descriptor =
        ::openat(folder, path.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | flags, 0600);
    if (descriptor < 0)
        return nullptr;
    // A file system without such locks leaves the file unmarked; that must not cost a capture.
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        ::close(descriptor);
        return nullptr;
    }
    return std::shared_ptr<BWFileClaim>(new BWFileClaim(descriptor));
}
