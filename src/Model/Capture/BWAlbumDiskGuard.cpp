#include "Model/Capture/BWAlbumDiskGuard.h"

#include "Model/BWAlbumManager.h"
#include "Model/Capture/BWAlbumRoom.h"
#include "Utils/BWMainQueue.h"

#include <thread>
#include <utility>

namespace {

constexpr double lookSeconds = 1;

} // namespace

BWAlbumDiskGuard::BWAlbumDiskGuard(const BWAlbumManager &albums, Check check, BWClock &clock)
    : m_albums(albums),
      m_check(check ? std::move(check) : Check(&BWAlbumRoom::isShort)),
      m_clock(clock),
      m_self(std::make_shared<BWAlbumDiskGuard *>(this))
{
}

BWAlbumDiskGuard::~BWAlbumDiskGuard()
{
    stop();
}

void BWAlbumDiskGuard::watch(const QUrl &movie, std::function<void()> isShort)
{
    stop();
    m_movie = movie;
    m_isShort = std::move(isShort);
    look();
}

void BWAlbumDiskGuard::stop()
{
    if (m_next)
        m_next->cancel();
    m_next.reset();
    m_movie.clear();
    m_isShort = nullptr;
}

void BWAlbumDiskGuard::look()
{
    m_next = DispatchAfterStrict::dispatchForQueue(
        this, [this] { look(); }, lookSeconds, m_clock);
    const BWAlbumPtr album = m_albums.currentAlbum();
    if (!album || std::exchange(m_looking, true))
        return;
    // Nobody waits for this thread: a disk that hangs must not hold up the program's end either.
    std::thread([check = m_check, movie = m_movie, folder = album->path(), self = std::weak_ptr(m_self)] {
        const bool isShort = check(movie, folder);
        BWMainQueue::post(self, [self, movie, isShort] {
            if (const auto guard = self.lock())
                (*guard)->looked(movie, isShort);
        });
    }).detach();
}

void BWAlbumDiskGuard::looked(const QUrl &movie, bool isShort)
{
    m_looking = false;
    if (!isShort || movie != m_movie || !m_isShort)
        return;
    const auto tell = std::exchange(m_isShort, nullptr);
    stop();
    tell();
}
