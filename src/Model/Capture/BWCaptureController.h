#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/BWAlbumManager.h"
#include "Model/Capture/BWCaptureResult.h"

#include <functional>
#include <memory>
#include <QByteArray>

class BWAlbumDiskGuard;

/// Takes what cameras capture into the current album: snapshots when they come, movies when they are complete, however
/// a recording came to its end. Operations on the GUI thread.
class BWCaptureController {
public:
    /// What the user learns of a capture. Called on the GUI thread.
    struct Feedback {
        /// The camera took a still; it is not saved yet.
        std::function<void()> snapshot;
        /// The camera began or ended to record.
        std::function<void(bool recording)> recording;
        /// A capture is done: it is in the album, or it is known why not.
        std::function<void(const BWCaptureResult &result)> done;
        /// A capture takes long to be copied into the album; so much of it is there, from 0 to 1.
        std::function<void(double done)> copying = {};
    };

    /// `guard` watches the room in the album while a movie grows elsewhere; one with the usual check if null.
    BWCaptureController(BWAlbumManager &albums, Feedback feedback, std::shared_ptr<BWAlbumDiskGuard> guard = {});

    /// Installs the snapshot, recording and hardware-button callbacks. They may be called on any thread until the camera is gone
    /// and outlive this object without harm.
    void prepareCamera(BWCamera &camera);

    /// What snapshots tell about themselves from now on. The time is put in by itself.
    void setSnapshotTags(const QString &camera, const QString &software);

    /// Asks the camera for a still; nothing happens without a camera.
    static void forceSnapshot(const BWCameraPtr &camera);

    /// Begins a recording, or ends the one that runs. Returns at once: a movie may take a while to be finished.
    void toggleRecording(const BWCameraPtr &camera);

    /// As if the button on the camera had been pressed. Any thread.
    void pressHardwareButton(BWCamera &camera) const;

    /// What the button on the camera does: a snapshot at once, or else `record` on the GUI thread.
    void setButtonRecords(bool records, std::function<void()> record);

private:
    void recordingEndsForAlbum(const BWCameraPtr &camera);

    struct Shared;
    std::shared_ptr<Shared> m_shared;
    std::shared_ptr<BWAlbumDiskGuard> m_guard;
};
