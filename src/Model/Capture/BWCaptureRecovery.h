#pragma once

#include "Model/Albums/BWAlbumManager.h"

#include <functional>
#include <memory>
#include <QThreadPool>

/// Brings what a crashed run left behind into the current album, without holding up the start. GUI thread.
class BWCaptureRecovery {
public:
    /// `recovered` is called on the GUI thread, at most once, with the number of captures that came into the album and
    /// the one that came last.
    BWCaptureRecovery(BWAlbumManager &albums, std::function<void(int captures, const QUrl &last)> recovered);
    /// Waits for a file that is being completed; the rest is left to the next start.
    ~BWCaptureRecovery();

    /// Once, at start. Looks into those folders for temporary files.
    void start(const QStringList &temporaryFolders);

private:
    struct Shared;

    std::shared_ptr<Shared> m_shared;
    QThreadPool m_worker;
};
