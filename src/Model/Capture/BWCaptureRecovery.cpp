#include "Model/Capture/BWCaptureRecovery.h"

#include "Model/Capture/BWOrphanedCaptures.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <QFile>
#include <utility>

struct BWCaptureRecovery::Shared : std::enable_shared_from_this<Shared> {
    Shared(BWAlbumManager &albumManager, std::function<void(int, const QUrl &)> callback)
        : albums(albumManager), recovered(std::move(callback))
    {
    }

    void takeIn(const QList<BWOrphanedCapture> &captures);
    void takenIn(bool added, const BWOrphanedCapture &capture, const QUrl &file);

    BWAlbumManager &albums;
    std::function<void(int, const QUrl &)> recovered;
    qsizetype waiting = 0;
    int count = 0;
    QUrl last;
};

BWCaptureRecovery::BWCaptureRecovery(BWAlbumManager &albums, std::function<void(int, const QUrl &)> recovered)
    : m_shared(std::make_shared<Shared>(albums, std::move(recovered)))
{
    m_worker.setMaxThreadCount(1);
}

BWCaptureRecovery::~BWCaptureRecovery()
{
    m_worker.waitForDone();
}

void BWCaptureRecovery::start(const QStringList &temporaryFolders)
{
    const BWAlbumPtr album = m_shared->albums.currentAlbum();
    if (!album)
        return;
    m_worker.start([weak = std::weak_ptr(m_shared), temporaryFolders, path = album->path()] {
        BWOrphanedCaptures::removeHalfCopies(path);
        const QList<BWOrphanedCapture> captures = BWOrphanedCaptures::collect(temporaryFolders, path);
        if (captures.isEmpty())
            return;
        BWMainQueue::post(weak, [weak, captures] {
            if (const auto shared = weak.lock())
                shared->takeIn(captures);
        });
    });
}

void BWCaptureRecovery::Shared::takeIn(const QList<BWOrphanedCapture> &captures)
{
    waiting = captures.size();
    for (const BWOrphanedCapture &capture : captures) {
        albums.addFile(capture.file, capture.type, [weak = weak_from_this(), capture](bool added, const QUrl &file) {
            if (const auto shared = weak.lock())
                shared->takenIn(added, capture, file);
        });
    }
}

void BWCaptureRecovery::Shared::takenIn(bool added, const BWOrphanedCapture &capture, const QUrl &file)
{
    if (added) {
        qCInfo(bwModel).noquote() << "A capture of an earlier run came into the album as" << file.toLocalFile();
        if (!QFile::remove(capture.file.toLocalFile()))
            qCWarning(bwModel).noquote() << "It cannot be removed from" << capture.file.toLocalFile();
        ++count;
        last = file;
    }
    if (--waiting == 0 && count > 0)
        recovered(count, last);
}
