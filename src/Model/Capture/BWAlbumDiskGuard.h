// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <QObject>
#include <QUrl>

class BWAlbumManager;

/// Checks every second, as long as it exists, whether the current album's disk still has room for a movie that is being
/// recorded on another disk. GUI thread.
class BWAlbumDiskGuard : public QObject {
    Q_OBJECT

public:
    /// Whether there is too little room. Called on a thread of its own, because a disk may keep it waiting forever;
    /// then it is not called again.
    using Check = std::function<bool(const QUrl &movie, const QUrl &album)>;

    /// Calls `onShort` once, as soon as the room is short.
    BWAlbumDiskGuard(const BWAlbumManager &albums, QUrl movie, std::function<void()> onShort, Check check = {},
                     BWClock &clock = BWClock::system());
    ~BWAlbumDiskGuard() override;

    /// The usual check: true once the album's disk has only just enough room for what the movie holds so far. False if
    /// the album is on the movie's own disk, which needs no room for it, and if the room is unknown.
    static bool isShort(const QUrl &movie, const QUrl &album);

private:
    void look();
    void looked(bool isShort);

    const BWAlbumManager &m_albums;
    const QUrl m_movie;
    std::function<void()> m_onShort;
    const Check m_check;
    BWClock &m_clock;
    DispatchAfterStrict::Handle m_next;
    bool m_looking = false;
    BWAliveToken m_alive;
    BWWorkerPool m_disk{1, std::chrono::milliseconds(0)}; // one that hangs must not hold up the program's end either
};
