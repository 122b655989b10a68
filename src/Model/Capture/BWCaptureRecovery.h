// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbumManager.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWTemporaryFiles.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <memory>
#include <QDateTime>
#include <QList>
#include <QStringList>
#include <QUrl>

/// A capture that an earlier run of the program left in a folder for temporary files: a picture or movie of this user's
/// own, whole and ready for an album.
struct BWOrphanedCapture {
    QUrl file;
    BWMediaType type = BWMediaType::Image;
    std::shared_ptr<BWFileClaim> claim; ///< keeps other runs away until the capture is in its album
};

/// Finds the captures that a crashed run left behind. Touches files only; any thread.
class BWOrphanedCaptures {
public:
    BWOrphanedCaptures() = delete;

    /// Finds the captures that no running program claims, in our private folders in these, and, as earlier versions
    /// left them, in these themselves. Completes movies; removes files that hold nothing and those already in `album`.
    /// Leaves alone what others may have put there, and what the album's disk has no room for. Oldest first.
    static QList<BWOrphanedCapture> collect(const QStringList &temporaryFolders, const QUrl &album,
                                            const QDateTime &now = QDateTime::currentDateTime());

    /// Removes the unfinished copies that a crash left in an album; the captures are still in the temporary folder.
    static void removeHalfCopies(const QUrl &album, const QDateTime &now = QDateTime::currentDateTime());
};

/// Brings what a crashed run left behind into the current album, without holding up the start. Its end waits for a file
/// that is being completed; the rest is left to the next start. GUI thread.
class BWCaptureRecovery {
public:
    /// `recovered` is called on the GUI thread, at most once, with the number of captures that came into the album and
    /// the one that came last.
    BWCaptureRecovery(BWAlbumManager &albums, std::function<void(int captures, const QUrl &last)> recovered);

    /// Once, at start. Looks into those folders for temporary files, and into all albums for half copies.
    void start(const QStringList &temporaryFolders);

private:
    void takeIn(const QList<BWOrphanedCapture> &captures);
    void takenIn(bool added, const BWOrphanedCapture &capture, const QUrl &file);

    BWAlbumManager &m_albums;
    const std::function<void(int, const QUrl &)> m_recovered;
    qsizetype m_waiting = 0;
    int m_count = 0;
    QUrl m_last;
    BWAliveToken m_alive;
    BWWorkerPool m_worker{1, BWWorkerPool::untilDone};
    BWWorkerPool m_sweeper{1, std::chrono::milliseconds(0)}; // the disk of an album may not answer
};
