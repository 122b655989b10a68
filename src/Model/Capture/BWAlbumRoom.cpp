#include "Model/Capture/BWAlbumRoom.h"

#include "BWACUDriver/BWDiskSpace.h"
#include "Utils/BWFilePath.h"

#include <sys/stat.h>

bool BWAlbumRoom::isShort(const QUrl &movie, const QUrl &album)
{
    struct stat file { };
    struct stat folder { };
    const QByteArray folderPath = BWFilePath::native(album);
    if (::stat(BWFilePath::native(movie).constData(), &file) != 0 || ::stat(folderPath.constData(), &folder) != 0
        || file.st_dev == folder.st_dev)
        return false;
    // Seconds pass between two looks, and the movie gets an index: room for these, and some for other programs.
    constexpr uint64_t reserve = 16 << 20;
    return BWDiskSpace::isNearlyFull(folderPath, static_cast<uint64_t>(file.st_size), reserve);
}
