#include "Model/Capture/BWCaptureRecovery.h"

#include "Model/Capture/BWOrphanedCaptures.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <QFile>
#include <utility>

BWCaptureRecovery::BWCaptureRecovery(BWAlbumManager &albums, std::function<void(int, const QUrl &)> recovered)
    : m_albums(albums), m_recovered(std::move(recovered))
{
}

void BWCaptureRecovery::start(const QStringList &temporaryFolders)
{
    const BWAlbumPtr album = m_albums.currentAlbum();
    if (!album)
        return;
    m_worker.run([this, alive = m_alive.watch(), temporaryFolders, path = album->path()] {
        BWOrphanedCaptures::removeHalfCopies(path);
        const QList<BWOrphanedCapture> captures = BWOrphanedCaptures::collect(temporaryFolders, path);
        if (!captures.isEmpty())
            BWMainQueue::post(alive, [this, captures] { takeIn(captures); });
    });
}

void BWCaptureRecovery::takeIn(const QList<BWOrphanedCapture> &captures)
{
    m_waiting = captures.size();
    for (const BWOrphanedCapture &capture : captures) {
        m_albums.addFile(capture.file, capture.type,
                         [this, alive = m_alive.watch(), capture](bool added, const QUrl &file) {
                             if (!alive.expired())
                                 takenIn(added, capture, file);
                         });
    }
}

void BWCaptureRecovery::takenIn(bool added, const BWOrphanedCapture &capture, const QUrl &file)
{
    if (added) {
        qCInfo(bwModel).noquote() << "A capture of an earlier run came into the album as" << file.toLocalFile();
        if (!QFile::remove(capture.file.toLocalFile()))
            qCWarning(bwModel).noquote() << "It cannot be removed from" << capture.file.toLocalFile();
        ++m_count;
        m_last = file;
    }
    if (--m_waiting == 0 && m_count > 0)
        m_recovered(m_count, m_last);
}
