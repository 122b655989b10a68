// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWAlbumDiskGuard.h"

#include "BWACUDriver/BWDiskSpace.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWMainQueue.h"

#include <sys/stat.h>
#include <utility>

namespace {

constexpr double lookSeconds = 1;

} // namespace

bool BWAlbumDiskGuard::isShort(const QUrl &movie, const QUrl &album)
{
    struct stat file { };
    struct stat folder { };
    const QByteArray folderPath = BWFilePath::native(album);
    if (::stat(BWFilePath::native(movie).constData(), &file) != 0 || ::stat(folderPath.constData(), &folder) != 0
        || file.st_dev == folder.st_dev)
        return false;
    // The movie grows between two checks, and gets an index: room for these, and some for other programs.
    constexpr uint64_t reserve = 16 << 20;
    return BWDiskSpace::isNearlyFull(folderPath, static_cast<uint64_t>(file.st_size), reserve);
}

BWAlbumDiskGuard::BWAlbumDiskGuard(const BWAlbumManager &albums, QUrl movie, std::function<void()> onShort, Check check,
                                   BWClock &clock)
    : m_albums(albums),
      m_movie(std::move(movie)),
      m_onShort(std::move(onShort)),
      m_check(check ? std::move(check) : Check(&BWAlbumDiskGuard::isShort)),
      m_clock(clock)
{
    look();
}

BWAlbumDiskGuard::~BWAlbumDiskGuard()
{
    m_next->cancel();
}

void BWAlbumDiskGuard::look()
{
    m_next = DispatchAfterStrict::dispatchForQueue(
        this, [this] { look(); }, lookSeconds, m_clock);
    const BWAlbumPtr album = m_albums.currentAlbum();
    if (!album || std::exchange(m_looking, true))
        return;
    m_disk.run([this, check = m_check, movie = m_movie, folder = album->path(), alive = m_alive.watch()] {
        const bool isShort = check(movie, folder);
        BWMainQueue::post(alive, [this, isShort] { looked(isShort); });
    });
}

void BWAlbumDiskGuard::looked(bool isShort)
{
    m_looking = false;
    if (!isShort || !m_onShort)
        return;
    m_next->cancel();
    std::exchange(m_onShort, nullptr)(); // may be the end of this object
}
