// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWFileCopy.h"

#include "BWACUDriver/BWFileBytes.h"
#include "Utils/BWFilePath.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <new>
#include <QUuid>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

namespace {

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : m_fd(fd) { }
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    /// False when what was written turns out not to be stored.
    bool close() { return m_fd < 0 || ::close(std::exchange(m_fd, -1)) == 0; }

private:
    int m_fd;
};

/// Reports how far a copy has come on the disk, and not only in memory.
class Reporter {
public:
    Reporter(const BWFileCopy::Progress &progress, int file, off_t total)
        : m_progress(progress), m_file(file), m_total(total)
    {
    }
    /// False, with the reason in errno, if the copy is to stop.
    bool add(ssize_t bytes)
    {
        m_done += bytes;
        if (!m_writing.written(m_file, m_done))
            return false;
        if (!m_progress || m_total <= 0 || m_progress(std::min(1.0, double(m_done) / double(m_total))))
            return true;
        errno = ECANCELED;
        return false;
    }

private:
    const BWFileCopy::Progress &m_progress;
    BWSteadyWriting m_writing;
    const int m_file;
    const off_t m_total;
    off_t m_done = 0;
};

bool copyThroughMemory(int from, int to, Reporter &reporter)
{
    constexpr std::size_t size = 4 << 20;
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[size]);
    for (;;) {
        const ssize_t got = buffer ? ::read(from, buffer.get(), size) : -1;
        if (got == 0)
            return true;
        if (got < 0 && errno != EINTR)
            return false;
        if (got > 0 && !BWFileBytes::write(to, buffer.get(), got))
            return false;
        if (got > 0 && !reporter.add(got))
            return false;
    }
}

/// Lets the file system copy, which shares the blocks if it can; goes on by hand from where that stopped.
bool copyData(int from, int to, Reporter &reporter)
{
    constexpr std::size_t step = std::size_t(16) << 20;
    for (;;) {
        const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, step, 0);
        if (copied <= 0)
            return copyThroughMemory(from, to, reporter);
        if (!reporter.add(copied))
            return false;
    }
}

/// Tries one name after the other until one is free; empty, with the reason in errno, when there is none.
QByteArray takeFreeName(const BWFileCopy::FreeName &freeName, const std::function<bool(const QByteArray &name)> &take)
{
    QByteArray refused;
    for (;;) {
        QByteArray name = BWFilePath::native(freeName());
        if (take(name))
            return name;
        if (errno != EEXIST || name == refused) // said to be free twice, and taken
            return {};
        refused = name;
    }
}

/// Such as a rating. What the other disk cannot keep is left out.
void copyNotes(int from, int to)
{
    constexpr std::size_t most = 4096;
    std::array<char, most> names{};
    const ssize_t length = ::flistxattr(from, names.data(), names.size());
    for (ssize_t at = 0; at < length; at += ssize_t(std::strlen(&names[std::size_t(at)])) + 1) {
        const char *name = &names[std::size_t(at)];
        std::array<char, most> value{};
        const ssize_t size = ::fgetxattr(from, name, value.data(), value.size());
        if (size >= 0)
            ::fsetxattr(to, name, value.data(), std::size_t(size), 0);
    }
}

enum class Kept { Date, Everything };

/// Empty, with the reason in errno, when it failed.
QByteArray copy(const QByteArray &from, const BWFileCopy::FreeName &freeName, const BWFileCopy::Progress &progress,
                Kept kept = Kept::Date)
{
    // Without blocking, so that a pipe in place of a file does not block the program.
    const FileDescriptor source(::open(from.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info;
    if (!source.isOpen() || ::fstat(source.get(), &info) != 0)
        return {};
    if (!S_ISREG(info.st_mode)) {
        errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
        return {};
    }

    const QByteArray to = BWFilePath::native(freeName());
    const qsizetype slash = to.lastIndexOf('/');
    const QByteArray folder = to.left(slash + 1);
    const QByteArray unique = QUuid::createUuid().toByteArray(QUuid::Id128).left(8);
    const QByteArray part = folder + '.' + to.mid(slash + 1) + '.' + unique + ".part";
    // A private one stays so from its first byte on.
    const mode_t rights = kept == Kept::Everything ? info.st_mode & 0600 : 0666;
    FileDescriptor target(::open(part.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, rights));
    if (!target.isOpen())
        return {};

    const timespec times[]{info.st_atim, info.st_mtim};
    Reporter reporter(progress, target.get(), info.st_size);
    bool isFirst = true; // the name for which the copy was begun
    const auto name = [&] { return std::exchange(isFirst, false) ? BWFilePath::url(to) : freeName(); };
    const bool hasData = copyData(source.get(), target.get(), reporter);
    if (hasData && kept == Kept::Everything) {
        copyNotes(source.get(), target.get());
        (void)::fchmod(target.get(), info.st_mode & 0777);
    }
    const bool copied =
        hasData && ::futimens(target.get(), times) == 0 && BWFileBytes::synchronize(target.get()) && target.close();
    QByteArray taken = copied
        ? takeFreeName(name,
                       [&part](const QByteArray &free) { return BWFileCopy::renameWithoutOverwriting(part, free); })
        : QByteArray();
    if (taken.isEmpty()) {
        const int reason = errno;
        ::unlink(part.constData());
        errno = reason;
        return {};
    }
    BWFileBytes::synchronizeFolder(folder);
    return taken;
}

/// Read while there are no other threads, which could be making files meanwhile.
const mode_t usersMask = [] {
    const mode_t mask = ::umask(077);
    ::umask(mask);
    return mask;
}();

/// Empty also if it cannot be done, as between two disks, or if the file would not be this user's alone. The file then
/// has the rights of any new file.
QByteArray giveSecondName(const QByteArray &from, const BWFileCopy::FreeName &freeName)
{
    const FileDescriptor source(::open(from.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    struct stat info;
    if (!source.isOpen() || ::fstat(source.get(), &info) != 0 || !S_ISREG(info.st_mode)
        || !BWFileBytes::synchronize(source.get()) || info.st_uid != ::geteuid() || info.st_nlink != 1
        || ::fchmod(source.get(), 0666 & ~usersMask) != 0)
        return {};
    QByteArray name = takeFreeName(
        freeName, [&from](const QByteArray &free) { return ::link(from.constData(), free.constData()) == 0; });
    if (!name.isEmpty())
        BWFileBytes::synchronizeFolder(name.left(name.lastIndexOf('/') + 1));
    return name;
}

} // namespace

QUrl BWFileCopy::shareUnderFreeName(const QUrl &from, const FreeName &freeName, QString *error,
                                    const Progress &progress)
{
    QByteArray name = giveSecondName(BWFilePath::native(from), freeName);
    if (name.isEmpty())
        name = copy(BWFilePath::native(from), freeName, progress);
    if (name.isEmpty() && error)
        *error = QString::fromLocal8Bit(std::strerror(errno));
    return name.isEmpty() ? QUrl() : BWFilePath::url(name);
}

QUrl BWFileCopy::moveUnderFreeName(const QUrl &from, const FreeName &freeName, const Progress &progress)
{
    const QByteArray source = BWFilePath::native(from);
    struct stat before { };
    if (::lstat(source.constData(), &before) != 0)
        return {};
    QByteArray name =
        takeFreeName(freeName, [&source](const QByteArray &free) { return renameWithoutOverwriting(source, free); });
    if (name.isEmpty() && errno == EXDEV) {
        name = copy(source, freeName, progress, Kept::Everything);
        struct stat after { };
        errno = name.isEmpty() ? errno : EAGAIN;
        const bool isSame = !name.isEmpty() && ::lstat(source.constData(), &after) == 0 && after.st_ino == before.st_ino
            && after.st_size == before.st_size && after.st_mtim.tv_sec == before.st_mtim.tv_sec
            && after.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
        if (!name.isEmpty() && (!isSame || ::unlink(source.constData()) != 0)) {
            const int reason = errno;
            ::unlink(name.constData()); // or there would be two of them
            errno = reason;
            return {};
        }
    }
    if (name.isEmpty())
        return {};
    for (const QByteArray &path : {name, source})
        BWFileBytes::synchronizeFolder(path.left(path.lastIndexOf('/') + 1));
    return BWFilePath::url(name);
}

bool BWFileCopy::renameWithoutOverwriting(const QByteArray &from, const QByteArray &to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS) // not every file system supports every way
        return false;
    if (::link(from.constData(), to.constData()) == 0) {
        ::unlink(from.constData());
        return true;
    }
    if (errno == EEXIST)
        return false;
    // Takes the name with an empty file of our own, which the whole one then replaces.
    const FileDescriptor placeholder(::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!placeholder.isOpen())
        return false;
    if (::rename(from.constData(), to.constData()) == 0)
        return true;
    const int reason = errno;
    ::unlink(to.constData());
    errno = reason;
    return false;
}
