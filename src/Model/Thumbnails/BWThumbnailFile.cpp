#include "Model/Thumbnails/BWThumbnailFile.h"

#include <cerrno>
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

/// How many bytes could be read, up to `count`; below zero on failure.
ssize_t readFully(int file, void *target, std::size_t count)
{
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = ::pread(file, static_cast<char *>(target) + done, count - done, static_cast<off_t>(done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return got;
        if (got == 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(done);
}

} // namespace

std::optional<BWFileStamp> BWThumbnailFile::stampOf(const QByteArray &path)
{
    struct stat info;
    return ::stat(path.constData(), &info) == 0 ? stampFrom(info) : std::nullopt;
}

// Another file may take the name after it has been looked at: the flags keep a pipe or a terminal from doing harm then.
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
    const ssize_t got = readFully(m_file, bytes.data(), static_cast<std::size_t>(count));
    return bytes.left(got > 0 ? got : 0);
}

bool BWThumbnailFile::read(std::vector<uint8_t> &bytes, int64_t most) const
{
    const std::optional<BWFileStamp> now = stamp();
    if (!now || now->size > most)
        return false;
    bytes.resize(static_cast<std::size_t>(now->size));
    return readFully(m_file, bytes.data(), bytes.size()) == now->size;
}
