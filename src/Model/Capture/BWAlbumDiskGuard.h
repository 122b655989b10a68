#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <functional>
#include <memory>
#include <QObject>
#include <QUrl>

class BWAlbumManager;

/// Looks every second whether the album's disk still has room for the movie being recorded. GUI thread.
class BWAlbumDiskGuard : public QObject {
    Q_OBJECT

public:
    /// Whether there is too little room. Called on a thread of its own, because a disk may keep it waiting for ever;
    /// then it is not called again.
    using Check = std::function<bool(const QUrl &movie, const QUrl &album)>;

    explicit BWAlbumDiskGuard(const BWAlbumManager &albums, Check check = {}, BWClock &clock = BWClock::system());
    ~BWAlbumDiskGuard() override;

    /// Calls `isShort` once, as soon as the room is short; in place of what was watched before.
    void watch(const QUrl &movie, std::function<void()> isShort);
    void stop();

private:
    void look();
    void looked(const QUrl &movie, bool isShort);

    const BWAlbumManager &m_albums;
    Check m_check;
    BWClock &m_clock;
    QUrl m_movie;
    std::function<void()> m_isShort;
    DispatchAfterStrict::Handle m_next;
    std::shared_ptr<BWAlbumDiskGuard *> m_self; // what the checks' answers hold weakly
    bool m_looking = false;
};
