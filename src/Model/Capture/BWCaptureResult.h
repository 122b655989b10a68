#pragma once

#include "BWACUDriver/BWRecordingStatus.h"
#include "Model/Albums/BWAlbum.h"

#include <QUrl>

/// What became of one capture. Without any file there is nothing of it.
struct BWCaptureResult {
    BWMediaType type = BWMediaType::Image;
    QUrl file{}; ///< in the album; empty if it did not get there
    QUrl left{}; ///< where it lies instead; empty if it is in the album, or could not be written at all
    BWRecordingStatus recording{}; ///< of a movie: how long it is, and how it ended
    QString camera{}; ///< of a movie: the camera's title, as menus show it
    BWAlbumPtr album{}; ///< that it is in; null also if that one is no longer listed
};

/// Why nothing came of a press of Record.
enum class BWRecordingRefusal {
    NotStreaming, ///< there is no camera that streams
    StillSaving, ///< the recording that is to be ended has ended, and its file is being completed
};
