#include "BWDiskSpace.h"

#include <algorithm>
#include <QFile>
#include <sys/statvfs.h>

bool BWDiskSpace::isNearlyFull(const QString &path)
{
    constexpr uint64_t least = 4 << 20; // bytes
    constexpr uint64_t most = 256 << 20;
    struct statvfs disk { };
    if (statvfs(QFile::encodeName(path).constData(), &disk) != 0)
        return false;
    const uint64_t total = uint64_t(disk.f_blocks) * disk.f_frsize;
    const uint64_t left = uint64_t(disk.f_bavail) * disk.f_frsize;
    return left < std::clamp(total / 20, least, most);
}
