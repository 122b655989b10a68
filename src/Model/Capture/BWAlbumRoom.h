#pragma once

#include <QUrl>

/// Whether a movie that grows on one disk will still fit into an album on another.
class BWAlbumRoom {
public:
    BWAlbumRoom() = delete;

    /// True once the album's disk has only just room enough for what the movie holds by now. False for an album on the
    /// movie's own disk, which takes it without room, and where it cannot be told. Waits for the disks; any thread.
    static bool isShort(const QUrl &movie, const QUrl &album);
};
