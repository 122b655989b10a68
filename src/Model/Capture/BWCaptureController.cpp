#include "Model/Capture/BWCaptureController.h"

#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWUIUtils.h"

#include <QFile>
#include <QSaveFile>
#include <utility>

using namespace Qt::StringLiterals;

/// What the cameras' callbacks use; held weakly by them.
struct BWCaptureController::Shared : std::enable_shared_from_this<Shared> {
    Shared(BWAlbumManager &albumManager, Feedback userFeedback) :
        albums(albumManager), feedback(std::move(userFeedback))
    {
    }

    void snapshotReady(const QByteArray &jpeg);
    void saved(bool added, const QUrl &temporary, const QUrl &file);

    BWAlbumManager &albums;
    Feedback feedback;
    std::function<void()> record; // GUI thread only
    std::atomic<bool> buttonRecords = false;
};

BWCaptureController::BWCaptureController(BWAlbumManager &albums, Feedback feedback) :
    m_shared(std::make_shared<Shared>(albums, std::move(feedback)))
{
}

void BWCaptureController::prepareCamera(BWCamera &camera)
{
    const std::weak_ptr weak(m_shared);
    camera.setOnCameraSnapshot([weak](BWCamera &, const QByteArray &jpeg) {
        if (const auto shared = weak.lock())
            shared->snapshotReady(jpeg);
    });
    camera.setOnCameraHardwareButton([weak](BWCamera &pressed) {
        const auto shared = weak.lock();
        if (!shared)
            return;
        if (!shared->buttonRecords) {
            pressed.takeSnapshot();
            return;
        }
        BWMainQueue::post(weak, [shared = shared.get()] {
            if (shared->record)
                shared->record();
        });
    });
}

void BWCaptureController::forceSnapshot(const BWCameraPtr &camera)
{
    if (camera)
        camera->takeSnapshot();
}

void BWCaptureController::setButtonRecords(bool records, std::function<void()> record)
{
    m_shared->record = std::move(record);
    m_shared->buttonRecords = records;
}

void BWCaptureController::Shared::snapshotReady(const QByteArray &jpeg)
{
    const std::weak_ptr weak = weak_from_this();
    const QUrl temporary = BWUIUtils::temporaryPath(u"brimwellpro"_s, u"jpg"_s);
    QSaveFile file(temporary.toLocalFile());
    if (!file.open(QIODevice::WriteOnly) || file.write(jpeg) != jpeg.size() || !file.commit()) {
        qCWarning(bwApp, "Snapshot: cannot write %s: %s", qUtf8Printable(file.fileName()),
                  qUtf8Printable(file.errorString()));
        BWMainQueue::post(weak, [this] { feedback.captureNotSaved({}); });
        return;
    }
    albums.addFile(temporary, BWMediaType::Image, [weak, temporary](bool added, const QUrl &saved) {
        if (const auto shared = weak.lock())
            shared->saved(added, temporary, saved);
    });
}

void BWCaptureController::Shared::saved(bool added, const QUrl &temporary, const QUrl &file)
{
    if (!added) {
        qCWarning(bwApp, "Snapshot: cannot be added to the album; it stays in %s",
                  qUtf8Printable(temporary.toLocalFile()));
        feedback.captureNotSaved(temporary);
        return;
    }
    QFile::remove(temporary.toLocalFile());
    feedback.snapshotSaved(file);
}
