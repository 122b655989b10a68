// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraSetting.h"
#include "BWACUDriver/BWCameraStatus.h"
#include "BWACUDriver/BWDetectedCamera.h"
#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"

#include <chrono>
#include <functional>
#include <memory>
#include <QByteArray>

class BWStreamSession;

/// A capture session on one camera.
///
/// Threads: operations may be called on any thread and never wait for the hardware; they are carried out in order on
/// the camera's own capture thread, and every completion is called there, exactly once, in every state. Callbacks
/// arrive on the capture thread, except snapshots, which arrive on a worker of the camera; if the capture thread
/// hangs, stopRecording() and the destructor report the end of a recording. Callbacks are set right after the session
/// is made; a callback set to nothing is not called. No callback is called after the destructor has returned. Do not
/// destroy a camera inside one of its callbacks.
///
/// Ownership: held by BWCameraManager and whoever else keeps the shared pointer. The destructor stops the stream and
/// waits for the capture thread; if the device does not answer for two seconds and no movie is left to be completed,
/// it abandons that thread. Completions still open then come later or never.
class BWCamera {
public:
    using Completion = std::function<void()>;
    using StartCompletion = std::function<void(bool success)>;
    using FrameCallback = std::function<void(BWCamera &, const BWFrame &)>;
    using SnapshotCallback = std::function<void(BWCamera &, const QByteArray &jpeg)>;
    using SnapshotDroppedCallback = std::function<void(BWCamera &)>;
    using StillReceiver = std::function<void(const QByteArray &jpeg)>;
    /// `status` is that of the recording being reported, whatever the camera does by then.
    using RecordingCallback = std::function<void(BWCamera &, bool recording, const BWRecordingStatus &status)>;
    using HardwareButtonCallback = std::function<void(BWCamera &)>;
    using StreamProblemCallback = std::function<void(BWCamera &, const BWStartProblem &)>;

    explicit BWCamera(const BWDetectedCameraPtr &detectedCamera);
    virtual ~BWCamera();
    BWCamera(const BWCamera &) = delete;
    BWCamera &operator=(const BWCamera &) = delete;

    /// The number of capture threads in this process, including abandoned ones, which may come back at any moment. Any
    /// thread.
    static int runningThreads();

    const BWDetectedCameraPtr &detectedCamera() const;
    QString identifierForProducts() const;

    /// Starts streaming. False means that the camera is not available now (another program holds it, or it is gone).
    /// Starting a started camera succeeds and changes nothing.
    void startWithCompletion(StartCompletion completion);

    /// Why the last start failed; none after a successful one. Any thread.
    BWStartProblem startProblem() const;

    /// Stops streaming, and a recording. The completion follows when the device is released, the last still delivered,
    /// the movie complete and its end reported; no frame callback comes after it until the next start. Stopping a stopped
    /// camera only calls the completion.
    void stopWithCompletion(Completion completion);

    /// Whether it is streaming: from a successful start until the stop is done. For other front ends.
    bool started() const;

    /// Changes the capture size; the completion follows when it is in effect. A streaming camera is stopped and
    /// restarted around the change. A size that the device does not have becomes the nearest it has (by area), and
    /// defaultResolution() returns that one.
    void setResolution(BWResolution resolution, Completion completion);

    /// The size at which the session runs, or will start.
    BWResolution defaultResolution() const;

    /// Applies one control at once. Values are clamped to the control's range; a control that the device does not
    /// have is ignored. Several values sent for one control while the camera is busy may become one: the newest.
    void setSetting(int identifier, double value);

    /// The control with that code, or null. The pointer is valid as long as the camera is.
    std::shared_ptr<BWCameraSetting> settingForIdentifier(int identifier) const;

    /// Requests one still, delivered through the snapshot callback as JPEG data: the camera's own bytes if it streams
    /// MJPEG (with the standard Huffman tables inserted if it leaves them out), else encoded once. Each call takes one
    /// good frame of its own, in order, or delivers no data if that cannot be encoded. Requests to a camera that is not
    /// streaming, or still open when the stream stops, are dropped: each is logged and calls the callback for that.
    ///
    /// A `receiver` gets this still in place of the callbacks; or no data, on any thread, if none could be taken.
    void takeSnapshot(StillReceiver receiver = {});

    /// Starts writing a QuickTime movie at that path, from the next frame on. The recording callback reports when it has
    /// really begun, and exactly once that it is over, even if no frame came. False, and nothing is reported or
    /// written, while another recording runs or the camera does not stream.
    bool startRecording(const QString &path);
    /// Whether a recording runs: from startRecording() until the file is complete.
    bool recording() const;
    /// Ends a recording. Returns when its file is complete and, unless on the capture thread, its end reported.
    void stopRecording();
    /// Ends the recording to that path, and no other, without waiting for its file. False if it has ended already.
    bool endRecording(const QString &path, BWRecordingStatus::End reason = BWRecordingStatus::End::Asked);
    /// Of the current recording, else of the last one. Any thread.
    BWRecordingStatus recordingStatus() const;

    void setOnCameraFrame(FrameCallback callback);
    void setOnCameraSnapshot(SnapshotCallback callback);
    void setOnCameraSnapshotDropped(SnapshotDroppedCallback callback);
    void setOnCameraRecording(RecordingCallback callback);
    void setOnCameraHardwareButton(HardwareButtonCallback callback);
    /// Called with the reason when a running stream could not be restarted, after a change of the size or a fault, and
    /// with Kind::None when it runs again. The camera keeps trying in between.
    void setOnCameraStreamProblem(StreamProblemCallback callback);

    /// Whether a press of the camera's button reaches the callback whichever window has the keyboard. If not (the
    /// button's device may not be read), the desktop may still send it to a window as a key. Any thread.
    bool readsHardwareButton() const;

    /// How long the device may be silent before its stream is restarted; 2 s at first. Any thread.
    void setStallTime(std::chrono::milliseconds time);

    BWCameraStatistics statistics() const;

protected:
    const std::shared_ptr<BWStreamSession> m_session;
};

using BWCameraPtr = std::shared_ptr<BWCamera>;

/// A camera behind an eMPIA EM28xx bridge chip: an analog receiver with a video norm and registers.
class BWEmpiaCamera : public BWCamera {
public:
    using BWCamera::BWCamera;

    /// Sets the video norm by its index (0 NTSC, 1 PAL, 2 SECAM); a norm that the device does not have changes
    /// nothing. The completion follows in any case.
    void setVideoNorm(int norm, Completion completion);

    /// The chip register's value, 0 to 255; 0 if it cannot be read. Waits for the device.
    int readRegisterWithIdentifier(int identifier);

    /// Writes the low 8 bits of `value`. Waits for the device.
    void writeValue(int value, int identifier);

    /// Why the last access to a register failed, in plain English for a technician; null if it did not. Waits for the
    /// device.
    QString registerProblem();
};
