// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWCaptureController.h"

#include "BWACUDriver/BWFileBytes.h"
#include "BWACUDriver/BWStill.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWTemporaryFiles.h"
#include "Utils/BWUIUtils.h"
#include "Utils/BWWorkerPool.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <QFile>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Null also if there is no memory for it just now.
QByteArray jpegOf(const BWFrame &frame)
{
    try {
        return BWStill::jpegOf(frame);
    } catch (const std::bad_alloc &) {
        return {};
    }
}

/// As it came, if there is no memory for more: a picture that says nothing of itself is better than none.
QByteArray tagged(const QByteArray &jpeg, const BWSnapshotTags &about)
{
    try {
        return about.addedTo(jpeg);
    } catch (const std::bad_alloc &) {
        qCWarning(bwApp, "Snapshot: it goes without metadata, for lack of memory");
        return jpeg;
    }
}

} // namespace

/// What the cameras' callbacks use, and hold weakly.
struct BWCaptureController::Shared : std::enable_shared_from_this<Shared> {
    struct Recording {
        const BWCamera *camera = nullptr; // only compared with; reports the end before it is gone
        QString title;
        std::shared_ptr<BWFileClaim> claim;
        bool hasBegun = false;
    };
    /// Of which snapshots are while the picture stands still.
    struct Frozen {
        BWFrame frame; // null while it does not
        BWSnapshotTags about; // as they were then
    };
    /// On its way into the album.
    struct Capture {
        QString temporary;
        std::shared_ptr<BWFileClaim> claim;
        BWCaptureResult result;
        BWAlbumPtr album{}; // null for the current one
        std::function<void(const BWCaptureResult &)> done{}; // in place of the callback
    };

    Shared(BWAlbumManager &albumManager, Callbacks userCallbacks)
        : albums(albumManager), callbacks(std::move(userCallbacks))
    {
    }

    void snapshotReady(const QByteArray &jpeg, const BWSnapshotTags &about);
    void write(const QByteArray &jpeg, const BWSnapshotTags &about, Capture capture);
    BWSnapshotTags tagsForNow();
    void buttonPressed(BWCamera &camera, const std::weak_ptr<BWCamera> &weak);
    Frozen frozenFrame();
    void save(const Frozen &still, const std::weak_ptr<BWCamera> &camera);
    QString recordingOf(const BWCameraPtr &camera);
    void recordingBegan(const QString &path);
    void recordingEnded(const BWRecordingStatus &status);
    bool isAnyRunning();
    void report(const Capture &capture);
    void takeIn(const Capture &capture, const QString &from);
    void takenIn(bool added, const QUrl &file, Capture capture, const QString &from);

    BWAlbumManager &albums;
    Callbacks callbacks;
    std::function<void()> record; // GUI thread only
    std::atomic<bool> buttonRecords = false;
    std::mutex mutex;
    std::map<QString, Recording> recordings; // by path, until their ends are reported
    std::map<QString, BWAlbumDiskGuard> guards; // theirs; GUI thread only
    BWSnapshotTags tags;
    Frozen frozen;
    std::unique_ptr<BWWorkerPool> worker = std::make_unique<BWWorkerPool>(); // for frozen frames; GUI thread only
};

BWCaptureController::BWCaptureController(BWAlbumManager &albums, Callbacks callbacks, BWAlbumDiskGuard::Check roomCheck)
    : m_shared(std::make_shared<Shared>(albums, std::move(callbacks))), m_roomCheck(std::move(roomCheck))
{
}

BWCaptureController::~BWCaptureController()
{
    // A camera's thread may be the last to hold what is shared.
    m_shared->guards.clear();
    m_shared->worker.reset();
}

void BWCaptureController::prepareCamera(const BWCameraPtr &camera)
{
    const std::weak_ptr weak(m_shared);
    camera->setOnCameraSnapshot([weak](BWCamera &, const QByteArray &jpeg) {
        if (const auto shared = weak.lock())
            shared->snapshotReady(jpeg, shared->tagsForNow());
    });
    camera->setOnCameraSnapshotDropped([weak](BWCamera &) {
        if (const auto shared = weak.lock(); shared && shared->callbacks.refused)
            BWMainQueue::post(weak, [self = shared.get()] { self->callbacks.refused(BWCaptureRefusal::NoPicture); });
    });
    camera->setOnCameraRecording([weak](BWCamera &, bool recording, const BWRecordingStatus &status) {
        const auto shared = weak.lock();
        if (!shared)
            return;
        if (recording)
            shared->recordingBegan(status.path);
        else
            shared->recordingEnded(status);
    });
    camera->setOnCameraHardwareButton([weak, weakCamera = std::weak_ptr(camera)](BWCamera &pressed) {
        if (const auto shared = weak.lock())
            shared->buttonPressed(pressed, weakCamera);
    });
}

void BWCaptureController::pressHardwareButton(const BWCameraPtr &camera) const
{
    m_shared->buttonPressed(*camera, camera);
}

bool BWCaptureController::isHardwareButton(int key, bool autoRepeat, bool readByCamera)
{
    // X11 and Wayland keyboards have the kernel's camera key as the one of webcams.
    return (key == Qt::Key_WebCam || key == Qt::Key_Camera) && !autoRepeat && !readByCamera;
}

void BWCaptureController::setFrozenFrame(const BWFrame &frame)
{
    const BWSnapshotTags about = m_shared->tagsForNow();
    const std::lock_guard lock(m_shared->mutex);
    m_shared->frozen = {frame, about};
}

void BWCaptureController::forceSnapshot(const BWCameraPtr &camera)
{
    if (const auto still = m_shared->frozenFrame(); !still.frame.isNull())
        m_shared->save(still, camera);
    else if (camera)
        camera->takeSnapshot();
}

void BWCaptureController::takeInto(const BWAlbumPtr &album, const BWCameraPtr &camera, const QuietPicture &picture)
{
    const auto take = [weak = std::weak_ptr(m_shared), album, picture](const QByteArray &jpeg) {
        BWMainQueue::post(weak, [picture, taken = !jpeg.isNull()] { picture.taken(taken); });
        const auto shared = weak.lock();
        if (shared && !jpeg.isNull())
            shared->write(jpeg, shared->tagsForNow(), {{}, {}, {BWMediaType::Image}, album, picture.done});
    };
    if (camera)
        camera->takeSnapshot(take);
    else
        take({});
}

void BWCaptureController::copyPicture(const BWCameraPtr &camera, const std::function<void(const QByteArray &)> &done)
{
    const std::weak_ptr weak(m_shared);
    const auto deliver = [weak, done](const QByteArray &jpeg, const BWSnapshotTags &about) {
        const QByteArray picture = jpeg.isNull() ? jpeg : tagged(jpeg, about);
        BWMainQueue::post(weak, [done, picture] { done(picture); });
    };
    if (const auto still = m_shared->frozenFrame(); !still.frame.isNull()) {
        m_shared->worker->run([deliver, still] { deliver(jpegOf(still.frame), still.about); });
    } else if (camera) {
        camera->takeSnapshot([deliver, weak](const QByteArray &jpeg) {
            if (const auto shared = weak.lock())
                deliver(jpeg, shared->tagsForNow());
        });
    } else {
        deliver({}, {});
    }
}

void BWCaptureController::whenStillsAreWritten(std::function<void()> done)
{
    m_shared->worker->run(
        [owner = std::weak_ptr(m_shared), done = std::move(done)] { BWMainQueue::post(owner, done); });
}

void BWCaptureController::toggleRecording(const BWCameraPtr &camera, const QString &title)
{
    // The window shows a recording until its end is reported, although its file may be complete before.
    const QString path = m_shared->recordingOf(camera);
    const bool done = path.isNull() ? beginRecording(camera, title) : camera->endRecording(path);
    if (!done && m_shared->callbacks.refused)
        m_shared->callbacks.refused(path.isNull() ? BWCaptureRefusal::NotStreaming : BWCaptureRefusal::StillSaving);
}

bool BWCaptureController::beginRecording(const BWCameraPtr &camera, const QString &title)
{
    if (!camera)
        return false;
    const QUrl file = BWUIUtils::temporaryPath(u"brimwellpro"_s, u"mov"_s);
    const QString path = file.toLocalFile();
    {
        const auto claim = BWFileClaim::create(path);
        const std::lock_guard lock(m_shared->mutex);
        m_shared->recordings[path] = {camera.get(), title, claim, false};
    }
    if (!camera->startRecording(path)) {
        QFile::remove(path); // the claim made it
        const std::lock_guard lock(m_shared->mutex);
        m_shared->recordings.erase(path);
        return false;
    }
    // What is recorded must still fit into the album when it is complete.
    const auto endInTime = [path, weak = std::weak_ptr(camera)] {
        const BWCameraPtr recorder = weak.lock();
        if (recorder && recorder->endRecording(path, BWRecordingStatus::End::DiskFull))
            qCWarning(bwApp, "Recording: it ends because the album's disk is nearly full");
    };
    m_shared->guards.try_emplace(path, m_shared->albums, file, endInTime, m_roomCheck);
    return true;
}

void BWCaptureController::setSnapshotTags(const QString &camera, const QString &software,
                                          const BWPictureMetadata &scale, const QString &measuredIn)
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->tags.camera = camera;
    m_shared->tags.software = software;
    m_shared->tags.scale = scale;
    m_shared->tags.measuredIn = measuredIn;
}

void BWCaptureController::setButtonRecords(bool records, std::function<void()> record)
{
    m_shared->record = std::move(record);
    m_shared->buttonRecords = records;
}

BWSnapshotTags BWCaptureController::Shared::tagsForNow()
{
    const std::lock_guard lock(mutex);
    BWSnapshotTags about = tags;
    about.taken = QDateTime::currentDateTime();
    return about;
}

/// A null one could not be encoded.
void BWCaptureController::Shared::snapshotReady(const QByteArray &jpeg, const BWSnapshotTags &about)
{
    if (jpeg.isNull())
        return report({{}, {}, {BWMediaType::Image}});
    BWMainQueue::post(weak_from_this(), [this] { callbacks.snapshot(); });
    write(jpeg, about, {{}, {}, {BWMediaType::Image}});
}

void BWCaptureController::Shared::write(const QByteArray &jpeg, const BWSnapshotTags &about, Capture capture)
{
    const QByteArray image = tagged(jpeg, about);
    capture.temporary = BWUIUtils::temporaryPath(u"brimwellpro"_s, u"jpg"_s).toLocalFile();
    // Under that name it is whole. Whoever puts it into the album brings it to the disk first, and hears of any fault there,
    // which the kernel reports only once.
    const QByteArray path = QFile::encodeName(capture.temporary);
    const QByteArray part = path + ".part";
    capture.claim = BWFileClaim::create(capture.temporary + u".part"_s);
    if (!capture.claim || !BWFileBytes::write(capture.claim->descriptor(), image.constData(), image.size())
        || ::rename(part.constData(), path.constData()) != 0) {
        qCWarning(bwApp, "Snapshot: cannot write %s: %s", path.constData(), std::strerror(errno));
        ::unlink(part.constData());
        report(capture);
        return;
    }
    takeIn(capture, capture.temporary);
}

void BWCaptureController::Shared::buttonPressed(BWCamera &camera, const std::weak_ptr<BWCamera> &weak)
{
    if (buttonRecords) {
        BWMainQueue::post(weak_from_this(), [this] {
            if (record)
                record();
        });
        return;
    }
    if (const Frozen still = frozenFrame(); !still.frame.isNull())
        BWMainQueue::post(weak_from_this(), [this, still, weak] { save(still, weak); });
    else
        camera.takeSnapshot();
}

/// With what is measured in it by now. Any thread.
BWCaptureController::Shared::Frozen BWCaptureController::Shared::frozenFrame()
{
    const std::lock_guard lock(mutex);
    Frozen now = frozen;
    now.about.scale = tags.scale;
    now.about.measuredIn = tags.measuredIn;
    return now;
}

/// GUI thread, which does not wait for the encoder. A frame that turns out to be torn leaves its press to the camera's
/// next picture, as frames of the camera do.
void BWCaptureController::Shared::save(const Frozen &still, const std::weak_ptr<BWCamera> &camera)
{
    if (!worker)
        return;
    worker->run([weak = weak_from_this(), still, camera] {
        const QByteArray jpeg = jpegOf(still.frame);
        const auto shared = weak.lock();
        if (shared && !jpeg.isNull())
            shared->snapshotReady(jpeg, still.about);
        else if (shared)
            BWMainQueue::post(weak, [self = shared.get(), camera] {
                if (const BWCameraPtr instead = camera.lock())
                    instead->takeSnapshot();
                else
                    self->callbacks.done({BWMediaType::Image});
            });
    });
}

/// The path of the recording whose end the camera has not reported yet; null if it has none.
QString BWCaptureController::Shared::recordingOf(const BWCameraPtr &camera)
{
    const std::lock_guard lock(mutex);
    const auto found = std::find_if(recordings.cbegin(), recordings.cend(),
                                    [&camera](const auto &entry) { return entry.second.camera == camera.get(); });
    return found != recordings.cend() ? found->first : QString();
}

void BWCaptureController::Shared::recordingBegan(const QString &path)
{
    {
        const std::lock_guard lock(mutex);
        if (const auto found = recordings.find(path); found != recordings.end())
            found->second.hasBegun = true;
    }
    BWMainQueue::post(weak_from_this(), [this] { callbacks.recording(isAnyRunning()); });
}

void BWCaptureController::Shared::recordingEnded(const BWRecordingStatus &status)
{
    Recording recording;
    {
        const std::lock_guard lock(mutex);
        const auto found = recordings.find(status.path);
        if (found == recordings.end())
            return;
        recording = std::move(found->second);
        recordings.erase(found);
    }
    BWMainQueue::post(weak_from_this(), [this, path = status.path] {
        guards.erase(path);
        callbacks.recording(isAnyRunning());
    });
    const BWCaptureResult movie{BWMediaType::Video, {}, {}, status, recording.title};
    if (status.frames > 0) {
        takeIn({status.path, recording.claim, movie}, status.path);
        return;
    }
    QFile::remove(status.path); // the claim made it
    report({{}, {}, movie});
}

bool BWCaptureController::Shared::isAnyRunning()
{
    const std::lock_guard lock(mutex);
    return std::any_of(recordings.cbegin(), recordings.cend(), [](const auto &entry) { return entry.second.hasBegun; });
}

void BWCaptureController::Shared::report(const Capture &capture)
{
    BWMainQueue::post(weak_from_this(),
                      [this, capture] { (capture.done ? capture.done : callbacks.done)(capture.result); });
}

void BWCaptureController::Shared::takeIn(const Capture &capture, const QString &from)
{
    albums.addFile(
        BWFilePath::fromLocal(from), capture.result.type,
        [weak = weak_from_this(), capture, from](bool added, const QUrl &file) {
            if (const auto shared = weak.lock())
                shared->takenIn(added, file, capture, from);
        },
        [weak = weak_from_this()](double done) {
            const auto shared = weak.lock();
            if (shared && shared->callbacks.copying)
                shared->callbacks.copying(done);
        },
        capture.album);
}

void BWCaptureController::Shared::takenIn(bool added, const QUrl &file, Capture capture, const QString &from)
{
    BWCaptureResult &result = capture.result;
    const bool isThere = QFile::exists(capture.temporary);
    if (!added && !isThere && capture.claim && from == capture.temporary) {
        qCWarning(bwApp, "Capture: %s was removed, but is still open", qUtf8Printable(from));
        takeIn(capture, capture.claim->openFile());
        return;
    }
    if (added) {
        QFile::remove(capture.temporary);
        result.file = file;
        result.album = albums.albumOfFile(file);
    } else if (isThere) {
        qCWarning(bwApp, "Capture: cannot be added to the album; it stays in %s", qUtf8Printable(capture.temporary));
        result.left = BWFilePath::fromLocal(capture.temporary);
    } else {
        qCWarning(bwApp, "Capture: %s was removed", qUtf8Printable(capture.temporary));
        result.recording.end = BWRecordingStatus::End::Failed;
    }
    (capture.done ? capture.done : callbacks.done)(result);
}
