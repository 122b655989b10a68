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
    struct statvfs disk { };
    const QByteArray folderPath = BWFilePath::native(album);
    if (::stat(BWFilePath::native(movie).constData(), &file) != 0 || ::stat(folderPath.constData(), &folder) != 0
        || file.st_dev == folder.st_dev || ::statvfs(folderPath.constData(), &disk) != 0)
        return false;
    // Seconds pass between two looks, and the movie gets an index: room for these, and some for other programs.
    constexpr uint64_t least = 16 << 20;
    constexpr uint64_t most = 256 << 20;
    const uint64_t total = uint64_t(disk.f_blocks) * disk.f_frsize;
    const uint64_t left = uint64_t(disk.f_bavail) * disk.f_frsize;
    return left < uint64_t(file.st_size) + std::clamp(total / 20, least, most);
}
