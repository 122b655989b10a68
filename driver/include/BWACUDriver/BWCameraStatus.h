// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <QString>

/// Why a camera could not be started.
struct BWStartProblem {
    enum class Kind {
        None, ///< it was started
        InUse, ///< another program holds the camera
        NoBandwidth, ///< the bus cannot carry the stream beside what it carries already
        NoPermission, ///< the user may not open the device node
        NoDriver, ///< the kernel has no driver for it
        Gone, ///< it is no longer attached
        Failed, ///< anything else; the device has logged why
    };

    Kind kind = Kind::None;
    QString holder{}; ///< InUse: name of the program that holds it; null if that cannot be seen

    bool isNone() const { return kind == Kind::None; }

    friend bool operator==(const BWStartProblem &, const BWStartProblem &) = default;
};

/// How far one recording has come, and how it ended.
struct BWRecordingStatus {
    enum class End {
        None, ///< it runs, or none has been started
        Asked, ///< by stopRecording(), or because the camera was stopped
        CameraChanged, ///< another size or video norm; a movie has only one
        CameraGone, ///< the camera was unplugged
        DiskFull, ///< hardly any room is left on the disk
        FileGone, ///< the file or its folder was removed while it grew
        Failed, ///< the file could not be written; the log says why
        NoMovies, ///< this installation cannot write movies; the log says why
    };

    QString path{}; ///< of the movie, as given to startRecording(); identifies the recording
    End end = End::None;
    std::chrono::milliseconds duration{0}; ///< of the movie so far
    int64_t bytes = 0; ///< size of the file so far
    uint64_t frames = 0; ///< in the file
    uint64_t framesLeftOut = 0; ///< missing from the file because disk or processor were too slow
};

/// Counts kept by a camera since it was opened.
struct BWCameraStatistics {
    uint64_t framesDelivered = 0; ///< handed to the frame callback
    uint64_t framesBad = 0; ///< skipped because the device flagged them, or torn or truncated on arrival
    uint64_t framesLost = 0; ///< gaps in the device's sequence numbers
    uint64_t streamRestarts = 0; ///< restarts after the device stopped delivering
};
