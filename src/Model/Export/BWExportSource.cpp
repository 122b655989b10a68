// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWExportSource.h"

#include "BWACUDriver/BWFileBytes.h"
#include "Utils/BWFilePath.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

bool sameTime(const timespec &a, const timespec &b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

} // namespace

BWExportSource::BWExportSource(QUrl file, int descriptor) : m_file(std::move(file)), m_descriptor(descriptor) { }

BWExportSource::~BWExportSource()
{
    ::close(m_descriptor);
}

std::shared_ptr<const BWExportSource> BWExportSource::open(const QUrl &file)
{
    const int descriptor = ::open(BWFilePath::native(file).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return nullptr;
    const std::shared_ptr<BWExportSource> source(new BWExportSource(file, descriptor));
    struct stat info;
    if (::fstat(descriptor, &info) != 0)
        return nullptr;
    if (!S_ISREG(info.st_mode)) {
        errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
        return nullptr;
    }
    source->m_size = info.st_size;
    source->m_modified = info.st_mtim;
    source->m_rights = info.st_mode & 0777;
    source->m_identity = {info.st_dev, info.st_ino};
    return source;
}

bool BWExportSource::readAt(qint64 offset, char *bytes, qint64 size) const
{
    const qint64 count = BWFileBytes::readAt(m_descriptor, offset, bytes, size);
    if (count >= 0 && count < size)
        errno = 0;
    return count == size;
}

bool BWExportSource::isUnchanged() const
{
    struct stat info;
    return ::fstat(m_descriptor, &info) == 0 && info.st_size == m_size && sameTime(info.st_mtim, m_modified);
}

bool BWExportSource::isAt(const QByteArray &nativePath) const
{
    struct stat info;
    return ::lstat(nativePath.constData(), &info) == 0 && m_identity == std::pair(info.st_dev, info.st_ino);
}
