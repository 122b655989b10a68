#include "Utils/BWFileClaim.h"

#include <cerrno>
#include <fcntl.h>
#include <QFile>
#include <sys/file.h>
#include <unistd.h>

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
    // A file system that knows no such marks leaves the file unmarked; that must not cost a capture.
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        ::close(descriptor);
        return nullptr;
    }
    return std::shared_ptr<BWFileClaim>(new BWFileClaim(descriptor));
}
