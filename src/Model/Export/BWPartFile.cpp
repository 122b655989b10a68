#include "Model/Export/BWPartFile.h"

#include "Utils/BWFilePath.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr qint64 flushStep = 8 << 20;
constexpr int mostAttempts = 10'000;

/// Some file systems have nothing that could be synchronized.
bool synchronize(int descriptor)
{
    return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
}

/// An error that this is told of is not told again by fsync(), so it counts, unless the file system only cannot do it.
bool flush(int descriptor, qint64 offset, unsigned how)
{
    return ::sync_file_range(descriptor, offset, flushStep, how) == 0 || errno == EINVAL || errno == ENOSYS
        || errno == ESPIPE || errno == EOPNOTSUPP;
}

void synchronizeFolder(const QByteArray &folder)
{
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

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
    const QByteArray ending = attempt == 1 ? ".part" : " (" + QByteArray::number(attempt) + ").part";
    return shortened(m_name, m_longestName - ending.size()) + ending;
}

bool BWPartFile::create()
{
    if (m_name.isEmpty()) {
        errno = EISDIR;
        return false;
    }
    struct stat info;
    const bool taken = ::lstat((m_folder + m_name).constData(), &info) == 0;
    if (taken && S_ISDIR(info.st_mode))
        errno = EISDIR;
    if (taken ? S_ISDIR(info.st_mode) : errno == ENAMETOOLONG)
        return false;
    if (const long longest = ::pathconf(m_folder.constData(), _PC_NAME_MAX); longest > 0)
        m_longestName = longest;
    BWPartNote::clearParts(m_folder);
    for (int attempt = 1; attempt < mostAttempts; ++attempt) {
        const QByteArray part = m_folder + partName(attempt);
        m_descriptor = ::open(part.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_descriptor < 0 && errno == EEXIST)
            continue;
        if (m_descriptor < 0)
            return false;
        m_part = part; // what is not ours is never removed
        m_note.emplace(m_part, m_descriptor);
        return true;
    }
    return false;
}

bool BWPartFile::writeAt(qint64 offset, const char *bytes, qint64 size)
{
    while (size > 0) {
        const ssize_t count = ::pwrite(m_descriptor, bytes, static_cast<std::size_t>(size), offset);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        offset += count;
        bytes += count;
        size -= count;
    }
    return written(offset);
}

bool BWPartFile::written(qint64 end)
{
    while (end - m_begun >= flushStep) {
        if (!flush(m_descriptor, m_begun, SYNC_FILE_RANGE_WRITE))
            return false;
        if (m_begun >= flushStep
            && !flush(m_descriptor, m_begun - flushStep,
                      SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER))
            return false;
        m_begun += flushStep;
    }
    return true;
}

bool BWPartFile::complete(const std::optional<timespec> &modified)
{
    if (modified) {
        const timespec times[]{{0, UTIME_OMIT}, *modified};
        ::futimens(m_descriptor, times); // a disk that belongs to somebody else may refuse
    }
    if (!synchronize(m_descriptor) || ::close(std::exchange(m_descriptor, -1)) != 0
        || ::rename(m_part.constData(), (m_folder + m_name).constData()) != 0)
        return false;
    m_part.clear();
    m_note.reset();
    synchronizeFolder(m_folder);
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
