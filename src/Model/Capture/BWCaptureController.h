#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Capture/BWAlbumDiskGuard.h"
#include "Model/Capture/BWCaptureResult.h"

#include <functional>
#include <memory>
#include <QByteArray>

/// Takes what cameras capture into the album that is current when it is complete: snapshots when they come, movies
/// however a recording came to its end. Operations on the GUI thread.
///
/// Each recording has a file, a claim on it and a guard of its own, from the press of Record until the camera has told
/// its end; a camera has one recording at a time, another camera may have one meanwhile.
class BWCaptureController {
public:
    /// What the user learns of a capture. Called on the GUI thread.
    struct Feedback {
        /// The camera took a still; it is not saved yet.
        std::function<void()> snapshot;
        /// A recording began or ended; whether one runs now.
        std::function<void(bool recording)> recording;
        /// A capture is done: it is in the album, or it is known why not.
        std::function<void(const BWCaptureResult &result)> done;
        /// A capture takes long to be copied into the album; so much of it is there, from 0 to 1.
        std::function<void(double done)> copying = {};
        /// Record was pressed in vain.
        std::function<void(BWRecordingRefusal reason)> refused = {};
    };

    /// `roomCheck` tells of the room in the album while a movie grows elsewhere; the usual check if null.
    BWCaptureController(BWAlbumManager &albums, Feedback feedback, BWAlbumDiskGuard::Check roomCheck = {});
    ~BWCaptureController();
    BWCaptureController(const BWCaptureController &) = delete;
    BWCaptureController &operator=(const BWCaptureController &) = delete;

    /// Installs the snapshot, recording and hardware-button callbacks. They may be called on any thread until the camera is gone
    /// and outlive this object without harm.
    void prepareCamera(BWCamera &camera);

    /// What snapshots tell about themselves from now on. The time is put in by itself.
    void setSnapshotTags(const QString &camera, const QString &software);

    /// Asks the camera for a still; nothing happens without a camera.
    static void forceSnapshot(const BWCameraPtr &camera);

    /// Begins a recording, or ends the one that the camera has. Returns at once: a movie may take a while to be finished.
    /// `title` is the camera's, for the person who hears of its end.
    void toggleRecording(const BWCameraPtr &camera, const QString &title = {});

    /// As if the button on the camera had been pressed. Any thread.
    void pressHardwareButton(BWCamera &camera) const;

    /// What the button on the camera does: a snapshot at once, or else `record` on the GUI thread.
    void setButtonRecords(bool records, std::function<void()> record);

private:
    bool beginRecording(const BWCameraPtr &camera, const QString &title);

    struct Shared;
    const std::shared_ptr<Shared> m_shared;
    const BWAlbumDiskGuard::Check m_roomCheck;
};
