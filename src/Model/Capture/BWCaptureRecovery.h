#pragma once

#include "Model/Albums/BWAlbumManager.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>

struct BWLeftCapture;

/// Brings what a crashed run left behind into the current album, without holding up the start. Its end waits for a file
/// that is being completed; the rest is left to the next start. GUI thread.
class BWCaptureRecovery {
public:
    /// `recovered` is called on the GUI thread, at most once, with the number of captures that came into the album and
    /// the one that came last.
    BWCaptureRecovery(BWAlbumManager &albums, std::function<void(int captures, const QUrl &last)> recovered);

    /// Once, at start. Looks into those folders for temporary files.
    void start(const QStringList &temporaryFolders);

private:
    void takeIn(const QList<BWLeftCapture> &captures);
    void takenIn(bool added, const BWLeftCapture &capture, const QUrl &file);

    BWAlbumManager &m_albums;
    const std::function<void(int, const QUrl &)> m_recovered;
    qsizetype m_waiting = 0;
    int m_count = 0;
    QUrl m_last;
    BWAliveToken m_alive;
    BWWorkerPool m_worker{1, BWWorkerPool::untilDone};
};
