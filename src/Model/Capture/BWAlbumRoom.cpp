#include "Model/Capture/BWAlbumRoom.h"

#include "Utils/BWFilePath.h"

#include <algorithm>
#include <cstdint>
#include <sys/stat.h>
#include <sys/statvfs.h>

bool BWAlbumRoom::isShort(const QUrl &movie, const QUrl &album)
{
    struct stat file { };
    struct stat folder { };
    if (::stat(BWFilePath::native(movie).constData(), &file) != 0
        || ::stat(BWFilePath::native(album).constData(), &folder) != 0 || file.st_dev == folder.st_dev)
        return false;
    const std::optional<qint64> left = room(album);
    return left && *left < file.st_size;
}

std::optional<qint64> BWAlbumRoom::room(const QUrl &album)
{
    struct statvfs disk { };
    // Some file systems have no limit, and so no blocks to count.
    if (::statvfs(BWFilePath::native(album).constData(), &disk) != 0 || disk.f_blocks == 0)
        return std::nullopt;
    // Seconds pass between two looks, and the movie gets an index: room for these, and some for other programs.
    constexpr uint64_t least = 16 << 20;
    constexpr uint64_t most = 256 << 20;
    const uint64_t total = uint64_t(disk.f_blocks) * disk.f_frsize;
    const uint64_t left = uint64_t(disk.f_bavail) * disk.f_frsize;
    return static_cast<qint64>(left) - static_cast<qint64>(std::clamp(total / 20, least, most));
}
