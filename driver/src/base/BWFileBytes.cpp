// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWFileBytes.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

namespace {

/// Calls with the bytes done so far until all are done, a call does none, or one fails. How many are done; -1 on
/// failure.
template <typename Call>
int64_t repeat(int64_t size, const Call &call)
{
    int64_t done = 0;
    while (done < size) {
        const ssize_t count = call(done, static_cast<std::size_t>(size - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        done += count;
    }
    return done;
}

template <typename Call>
bool bringToDisk(int file, const Call &call)
{
    while (call(file) != 0) {
        if (errno != EINTR)
            return errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
    }
    return true;
}

constexpr int64_t flushStep = 8 << 20;

/// True also if the file system only cannot do it.
bool flush(int file, int64_t offset, unsigned how)
{
    return ::sync_file_range(file, offset, flushStep, how) == 0 || errno == EINVAL || errno == ENOSYS || errno == ESPIPE
        || errno == EOPNOTSUPP;
}

} // namespace

bool BWFileBytes::write(int file, const char *bytes, int64_t size)
{
    return repeat(size, [=](int64_t done, std::size_t left) { return ::write(file, bytes + done, left); }) == size;
}

bool BWFileBytes::write(int file, std::span<const std::span<const uint8_t>> parts)
{
    std::vector<iovec> left;
    for (const std::span<const uint8_t> part : parts) {
        if (!part.empty())
            left.push_back({const_cast<uint8_t *>(part.data()), part.size()}); // which is only read
    }
    for (auto next = left.begin(); next != left.end();) {
        ssize_t count = ::writev(file, &*next, static_cast<int>(left.end() - next));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        for (; next != left.end() && static_cast<std::size_t>(count) >= next->iov_len; ++next)
            count -= static_cast<ssize_t>(next->iov_len);
        if (next != left.end())
            *next = {static_cast<uint8_t *>(next->iov_base) + count, next->iov_len - static_cast<std::size_t>(count)};
    }
    return true;
}

bool BWFileBytes::writeAt(int file, int64_t offset, const char *bytes, int64_t size)
{
    return repeat(size,
                  [=](int64_t done, std::size_t left) { return ::pwrite(file, bytes + done, left, offset + done); })
        == size;
}

int64_t BWFileBytes::readAt(int file, int64_t offset, void *bytes, int64_t size)
{
    auto *const target = static_cast<char *>(bytes);
    return repeat(size,
                  [=](int64_t done, std::size_t left) { return ::pread(file, target + done, left, offset + done); });
}

bool BWFileBytes::synchronizeData(int file)
{
    return bringToDisk(file, ::fdatasync);
}

bool BWFileBytes::synchronize(int file)
{
    return bringToDisk(file, ::fsync);
}

void BWFileBytes::synchronizeFolder(const QByteArray &path)
{
    const int folder = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    synchronize(folder);
    ::close(folder);
}

bool BWSteadyWriting::written(int file, int64_t end)
{
    while (end - m_begun >= flushStep) {
        if (!flush(file, m_begun, SYNC_FILE_RANGE_WRITE))
            return false;
        if (m_begun >= flushStep
            && !flush(file, m_begun - flushStep,
                      SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER))
            return false;
        m_begun += flushStep;
    }
    return true;
}
