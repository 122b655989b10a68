// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWDiskSpace.h"

#include <algorithm>
#include <sys/statvfs.h>

bool BWDiskSpace::isNearlyFull(const QByteArray &path, uint64_t toCome, uint64_t least)
{
    constexpr uint64_t most = 256 << 20;
    struct statvfs disk { };
    // Some file systems have no size: a tmpfs without a limit, and many that lie in a network.
    if (statvfs(path.constData(), &disk) != 0 || disk.f_blocks == 0)
        return false;
    const uint64_t total = uint64_t(disk.f_blocks) * disk.f_frsize;
    const uint64_t left = uint64_t(disk.f_bavail) * disk.f_frsize;
    return left < toCome + std::clamp(total / 20, least, most);
}
