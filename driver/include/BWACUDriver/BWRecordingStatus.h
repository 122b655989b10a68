#pragma once

#include <chrono>
#include <cstdint>
#include <QString>

/// How far one recording has come, and how it ended.
struct BWRecordingStatus {
    enum class End {
        None, ///< it runs, or there was none yet
        Asked, ///< by stopRecording(), or because the camera was stopped
        CameraChanged, ///< another size or video norm; a movie has only one
        CameraGone, ///< the camera was unplugged
        DiskFull, ///< hardly any room is left on the disk
        FileGone, ///< somebody removed the file, or its folder, while it grew
        Failed, ///< the file could not be written; the log tells why
    };

    QString path{}; ///< of the movie, as given to startRecording(); tells recordings apart
    End end = End::None;
    std::chrono::milliseconds duration{0}; ///< of the movie so far
    int64_t bytes = 0; ///< size of the file so far
    uint64_t frames = 0; ///< in the file
    uint64_t framesLeftOut = 0; ///< not in it because disk or processor were too slow
};
