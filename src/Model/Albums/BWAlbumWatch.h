// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <memory>
#include <optional>
#include <QList>
#include <QUrl>

/// Lists what an album holds on a thread of its own: at once, on request, and whenever its folder changes. A disk that
/// does not answer holds up only that thread, for which nothing waits.
class BWAlbumWatch {
public:
    using Listing = BWAlbum::Contents;
    struct Report {
        std::optional<Listing> listing; ///< nothing if the folder cannot be listed
        bool differs = true; ///< from the last report
        unsigned requests = 0; ///< the listing is newer than that many calls of request()
        bool filesWritten = false; ///< a file in the folder may have become another
    };

    /// Calls `report` on the GUI thread, until this object is gone, but not for a change that leaves all as it was.
    BWAlbumWatch(const BWAlbum &album, std::function<void(const Report &)> report);
    ~BWAlbumWatch();
    BWAlbumWatch(const BWAlbumWatch &) = delete;
    BWAlbumWatch &operator=(const BWAlbumWatch &) = delete;

    enum class Depth {
        Follow, ///< with what the system reports of the folder, which is all that happens to it on this computer
        ListAnew, ///< by asking the disk for all of it
    };
    /// Requests a new listing, which is reported whether or not it differs. Returns the number of calls so far.
    unsigned request(Depth depth);

private:
    class Worker;
    std::shared_ptr<Worker> m_worker; // shared with its thread
    BWWorkerPool m_thread{1, std::chrono::milliseconds(0)};
};
