// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "BWACUDriver/BWCameraStatus.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Capture/BWAlbumDiskGuard.h"
#include "Model/Capture/BWSnapshotTags.h"

#include <functional>
#include <memory>
#include <QByteArray>
#include <QString>
#include <QUrl>

/// What became of one capture. Without any file nothing was captured.
struct BWCaptureResult {
    BWMediaType type = BWMediaType::Image;
    QUrl file{}; ///< in the album; empty if it did not get there
    QUrl left{}; ///< where it is instead; empty if it is in the album, or could not be written at all
    BWRecordingStatus recording{}; ///< of a movie: how long it is, and how it ended
    QString camera{}; ///< of a movie: the camera's title, as menus show it
    BWAlbumPtr album{}; ///< that it is in; null if that one is no longer listed
};

/// Why a press of Record or of Snapshot had no effect.
enum class BWCaptureRefusal {
    NotStreaming, ///< no recording: no camera streams
    StillSaving, ///< no recording: the camera's recording has ended, and its file is being completed
    NoPicture, ///< no snapshot: the camera was gone or stopped before its next picture
};

/// Takes what cameras capture into the album that is current when it is complete: snapshots as they come, movies
/// however their recordings end. Operations on the GUI thread.
///
/// Each recording has a file, a claim on it and a guard of its own, from the press of Record until the camera reports
/// its end. A camera has one recording at a time; several cameras may record at once.
class BWCaptureController {
public:
    /// What the user learns of a capture. Called on the GUI thread.
    struct Callbacks {
        /// The camera took a still; it is not saved yet.
        std::function<void()> snapshot;
        /// A recording began or ended; whether any is running now.
        std::function<void(bool recording)> recording;
        /// A capture is done: in the album, or known to have failed.
        std::function<void(const BWCaptureResult &result)> done;
        /// How much of a capture that takes long to copy is in the album, from 0 to 1.
        std::function<void(double done)> copying = {};
        /// A press of Record or of Snapshot had no effect.
        std::function<void(BWCaptureRefusal reason)> refused = {};
    };

    /// `roomCheck` checks the room in the album while a movie grows elsewhere; the usual check if null.
    BWCaptureController(BWAlbumManager &albums, Callbacks callbacks, BWAlbumDiskGuard::Check roomCheck = {});
    ~BWCaptureController();
    BWCaptureController(const BWCaptureController &) = delete;
    BWCaptureController &operator=(const BWCaptureController &) = delete;

    /// Installs the snapshot, recording and hardware-button callbacks. They may be called on any thread until the
    /// camera is gone, and may outlive this object.
    void prepareCamera(const BWCameraPtr &camera);

    /// What snapshots say about themselves from now on, besides the time: the scale, with the resolution that follows from
    /// it, if there is a calibration, and what was measured in pictures of that name (BWCalibration). One of a frozen frame
    /// keeps camera and software of the moment when it was frozen.
    void setSnapshotTags(const QString &camera, const QString &software, const BWPictureMetadata &scale = {},
                         const QString &measuredIn = {});

    /// Every snapshot from now on is of that frame, however it is asked for; null: of the camera's next picture again.
    /// The frame is kept, so it must be a copy that holds no buffer of a device.
    void setFrozenFrame(const BWFrame &frame);

    /// Takes a still: of the frozen frame, with or without a camera; else of the camera's next picture.
    void forceSnapshot(const BWCameraPtr &camera);

    /// What becomes of one picture of a series. Called on the GUI thread, each at most once.
    struct QuietPicture {
        std::function<void(bool taken)> taken; ///< or the camera stopped before it could be
        std::function<void(const BWCaptureResult &result)> done; ///< as Callbacks::done; not without a picture
    };
    /// Takes a still of the camera's next picture, even while a frame is frozen, into that album. None of the Callbacks
    /// above hears of it, so there is neither sound nor flash.
    void takeInto(const BWAlbumPtr &album, const BWCameraPtr &camera, const QuietPicture &picture);

    /// The picture that a snapshot would be of now, as that would save it, for no album: `done` gets its JPEG on the GUI
    /// thread, null if there is none.
    void copyPicture(const BWCameraPtr &camera, const std::function<void(const QByteArray &jpeg)> &done);

    /// Calls `done` when all stills of frozen frames asked for so far are on their way into the album, as those of a
    /// camera are when it has stopped.
    void whenStillsAreWritten(std::function<void()> done);

    /// Begins a recording, or ends the camera's present one. Returns at once: completing a movie may take a while.
    /// `title` is the camera's, for the notice at the end.
    void toggleRecording(const BWCameraPtr &camera, const QString &title = {});

    /// As if the button on the camera had been pressed. Any thread.
    void pressHardwareButton(const BWCameraPtr &camera) const;

    /// Whether a key press that the desktop hands to the window is a press of the current camera's button. It is not if
    /// the camera reads its button itself (`readByCamera`), or every press would count twice.
    static bool isHardwareButton(int key, bool autoRepeat, bool readByCamera);

    /// What the button on the camera does: a snapshot at once, or else `record` on the GUI thread.
    void setButtonRecords(bool records, std::function<void()> record);

private:
    bool beginRecording(const BWCameraPtr &camera, const QString &title);

    struct Shared;
    const std::shared_ptr<Shared> m_shared;
    const BWAlbumDiskGuard::Check m_roomCheck;
};
