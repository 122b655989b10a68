// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <memory>
#include <QString>

/// Writes one QuickTime movie with MJPEG video. An MJPEG frame is copied without loss, a raw frame encoded once. The
/// time stamps of the frames define how long each picture is shown.
///
/// While it grows the file can be played up to the last frame at any moment, and reaches the disk once a
/// second, so a crash, a power cut or a full disk costs next to nothing: completeMovie() turns what is there into a
/// plain movie, as finish() does.
///
/// Used by one thread at a time. Faults are logged once.
class BWMovieWriter {
public:
    /// Creates the file at `path` for this user alone, or empties it. Null, with the reason in `error` if that is given, if it cannot be
    /// written.
    static std::unique_ptr<BWMovieWriter> create(const QString &path, QString *error = nullptr);

    /// Whether this installation can write movies. Any thread; the first call may take some time.
    static bool isPossible();

    /// Finishes.
    virtual ~BWMovieWriter() = default;

    /// Appends a frame. The first one determines size and pixel format: later frames of another size or format, and
    /// frames that cannot be encoded, are left out with the answer false. False also when writing failed (disk full);
    /// nothing is written from then on, and what is in the file stays readable.
    virtual bool write(const BWFrame &frame) = 0;

    /// Completes the file; false if writing failed before or now, or if it holds no picture (it is removed then). May
    /// be called again, with the same result; frames are no longer accepted.
    virtual bool finish() = 0;

    /// Size of the file so far.
    virtual int64_t bytesWritten() const = 0;
    /// Whether writing failed; what is in the file stays readable.
    virtual bool hasFailed() const = 0;
    /// Whether it failed because there was no room.
    virtual bool diskIsFull() const = 0;
    /// Whether the file or its folder was removed. Programs that have it open can still read it: the movie keeps
    /// growing, and finish() completes it.
    virtual bool isRemoved() const = 0;
    /// After finish(): whether the file got no picture; it is removed then.
    virtual bool isEmpty() const = 0;
};
