#include "Model/Capture/BWCaptureController.h"

#include "Model/Capture/BWAlbumDiskGuard.h"
#include "Model/Capture/BWSnapshotTags.h"
#include "Utils/BWFileClaim.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWUIUtils.h"

#include <atomic>
#include <mutex>
#include <QFile>
#include <QSaveFile>
#include <QThreadPool>
#include <utility>

using namespace Qt::StringLiterals;

/// What the cameras' callbacks use; held weakly by them.
struct BWCaptureController::Shared : std::enable_shared_from_this<Shared> {
    Shared(BWAlbumManager &albumManager, Feedback userFeedback)
        : albums(albumManager), feedback(std::move(userFeedback))
    {
    }

    void snapshotReady(const QByteArray &jpeg);
    void buttonPressed(BWCamera &camera);
    void recordingBegan();
    void recordingEnded(const BWRecordingStatus &status);
    void tell(const BWCaptureResult &result);
    void takeIn(const QUrl &temporary, const BWCaptureResult &capture, const std::shared_ptr<BWFileClaim> &claim);
    void takenIn(bool added, const QUrl &temporary, const QUrl &file, BWCaptureResult result);

    BWAlbumManager &albums;
    Feedback feedback;
    std::weak_ptr<BWAlbumDiskGuard> guard; // GUI thread only
    std::function<void()> record; // GUI thread only
    std::atomic<bool> buttonRecords = false;
    std::mutex mutex;
    QUrl recordTempFile; // the movie that is being recorded
    std::shared_ptr<BWFileClaim> recordClaim;
    bool albumIsFull = false; // which is why the recording ends
    BWSnapshotTags tags;
};

BWCaptureController::BWCaptureController(BWAlbumManager &albums, Feedback feedback,
                                         std::shared_ptr<BWAlbumDiskGuard> guard)
    : m_shared(std::make_shared<Shared>(albums, std::move(feedback))), m_guard(std::move(guard))
{
    if (!m_guard)
        m_guard = std::make_shared<BWAlbumDiskGuard>(albums);
    m_shared->guard = m_guard;
}

void BWCaptureController::prepareCamera(BWCamera &camera)
{
    const std::weak_ptr weak(m_shared);
    camera.setOnCameraSnapshot([weak](BWCamera &, const QByteArray &jpeg) {
        if (const auto shared = weak.lock())
            shared->snapshotReady(jpeg);
    });
    camera.setOnCameraRecording([weak](const BWCamera &recorder, bool recording) {
        const auto shared = weak.lock();
        if (!shared)
            return;
        if (recording)
            shared->recordingBegan();
        else
            shared->recordingEnded(recorder.recordingStatus());
    });
    camera.setOnCameraHardwareButton([weak](BWCamera &pressed) {
        if (const auto shared = weak.lock())
            shared->buttonPressed(pressed);
    });
}

void BWCaptureController::pressHardwareButton(BWCamera &camera) const
{
    m_shared->buttonPressed(camera);
}

void BWCaptureController::forceSnapshot(const BWCameraPtr &camera)
{
    if (camera)
        camera->takeSnapshot();
}

void BWCaptureController::toggleRecording(const BWCameraPtr &camera)
{
    if (!camera)
        return;
    if (camera->recording()) {
        // The camera waits for the movie to be finished; the window must not.
        QThreadPool::globalInstance()->start([camera] { camera->stopRecording(); });
        return;
    }
    const QUrl file = BWUIUtils::temporaryPath(u"brimwellpro"_s, u"mov"_s);
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->recordTempFile = file;
        m_shared->recordClaim = BWFileClaim::create(file.toLocalFile());
        m_shared->albumIsFull = false;
    }
    camera->startRecording(file.toLocalFile());
    m_guard->watch(file, [this, weak = std::weak_ptr(camera)] { recordingEndsForAlbum(weak.lock()); });
}

/// What is recorded must still fit into the album when it is complete.
void BWCaptureController::recordingEndsForAlbum(const BWCameraPtr &camera)
{
    if (!camera || !camera->recording())
        return;
    qCWarning(bwApp, "Recording: it ends because the album's disk is nearly full");
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->albumIsFull = true;
    }
    toggleRecording(camera);
}

void BWCaptureController::setSnapshotTags(const QString &camera, const QString &software)
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->tags.camera = camera;
    m_shared->tags.software = software;
}

void BWCaptureController::setButtonRecords(bool records, std::function<void()> record)
{
    m_shared->record = std::move(record);
    m_shared->buttonRecords = records;
}

void BWCaptureController::Shared::snapshotReady(const QByteArray &jpeg)
{
    BWMainQueue::post(weak_from_this(), [this] { feedback.snapshot(); });
    BWSnapshotTags about;
    {
        const std::lock_guard lock(mutex);
        about = tags;
    }
    about.taken = QDateTime::currentDateTime();
    const QByteArray image = about.addedTo(jpeg);
    const QUrl temporary = BWUIUtils::temporaryPath(u"brimwellpro"_s, u"jpg"_s);
    QSaveFile file(temporary.toLocalFile());
    const bool opened =
        file.open(QIODevice::WriteOnly) && file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    qint64 written = opened ? file.write(image) : -1;
    if (written >= 0 && written < image.size())
        written += file.write(image.sliced(written)); // which tells why it was only a part
    if (written != image.size() || !file.commit()) {
        qCWarning(bwApp, "Snapshot: cannot write %s: %s", qUtf8Printable(file.fileName()),
                  qUtf8Printable(file.errorString()));
        tell({BWMediaType::Image});
        return;
    }
    takeIn(temporary, {BWMediaType::Image}, BWFileClaim::existing(temporary.toLocalFile()));
}

void BWCaptureController::Shared::buttonPressed(BWCamera &camera)
{
    if (!buttonRecords) {
        camera.takeSnapshot();
        return;
    }
    BWMainQueue::post(weak_from_this(), [this] {
        if (record)
            record();
    });
}

void BWCaptureController::Shared::recordingBegan()
{
    BWMainQueue::post(weak_from_this(), [this] { feedback.recording(true); });
}

void BWCaptureController::Shared::recordingEnded(const BWRecordingStatus &status)
{
    BWMainQueue::post(weak_from_this(), [this] {
        if (const auto watching = guard.lock())
            watching->stop();
        feedback.recording(false);
    });
    QUrl file;
    std::shared_ptr<BWFileClaim> claim;
    BWCaptureResult movie{BWMediaType::Video, {}, {}, status};
    {
        const std::lock_guard lock(mutex);
        file = std::exchange(recordTempFile, {});
        claim = std::exchange(recordClaim, nullptr);
        if (std::exchange(albumIsFull, false) && status.end == BWRecordingStatus::End::Asked)
            movie.recording.end = BWRecordingStatus::End::DiskFull;
    }
    if (status.frames == 0)
        tell(movie); // there is no file without a picture
    else if (!file.isEmpty())
        takeIn(file, movie, claim);
}

void BWCaptureController::Shared::tell(const BWCaptureResult &result)
{
    BWMainQueue::post(weak_from_this(), [this, result] { feedback.done(result); });
}

void BWCaptureController::Shared::takeIn(const QUrl &temporary, const BWCaptureResult &capture,
                                         const std::shared_ptr<BWFileClaim> &claim)
{
    albums.addFile(
        temporary, capture.type,
        [weak = weak_from_this(), temporary, capture, claim](bool added, const QUrl &file) {
            if (const auto shared = weak.lock())
                shared->takenIn(added, temporary, file, capture);
        },
        [weak = weak_from_this()](double done) {
            const auto shared = weak.lock();
            if (shared && shared->feedback.copying)
                shared->feedback.copying(done);
        });
}

void BWCaptureController::Shared::takenIn(bool added, const QUrl &temporary, const QUrl &file, BWCaptureResult result)
{
    if (added) {
        QFile::remove(temporary.toLocalFile());
        result.file = file;
    } else if (QFile::exists(temporary.toLocalFile())) {
        qCWarning(bwApp, "Capture: cannot be added to the album; it stays in %s",
                  qUtf8Printable(temporary.toLocalFile()));
        result.left = temporary;
    } else {
        qCWarning(bwApp, "Capture: somebody removed %s", qUtf8Printable(temporary.toLocalFile()));
        result.recording.end = BWRecordingStatus::End::Failed;
    }
    feedback.done(result);
}
