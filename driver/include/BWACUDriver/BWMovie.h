// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <QImage>
#include <QString>

/// What completeMovie() did.
enum class BWMovieCompletion {
    Completed, ///< it is a plain movie now
    Plain, ///< it was one already; nothing was changed
    Empty, ///< it holds no whole picture; nothing was changed
    Failed, ///< it is not one of our movies, or cannot be read or written; it is as good as before
};

/// Turns a movie that was written in fragments of one picture each into a plain QuickTime movie with an index, in place
/// and without copying a picture, however far the writing had come: what follows the last whole picture is cut off.
///
/// The index goes behind the pictures. Then the header in front of them is turned, by one write of a few bytes, into
/// that of a media data box which holds all the fragments: before that write the file is a good fragmented movie, after
/// it a good plain one. Any thread; `error` gets the reason for a failure.
BWMovieCompletion completeMovie(const QString &path, QString *error = nullptr);

/// What represents a movie in a list: its first good picture, and its length.
struct BWMoviePicture {
    QImage image; ///< opaque, upright, with square pixels
    std::optional<std::chrono::milliseconds> length; ///< nothing for a movie that does not state it

    /// Reads them from an open QuickTime or MP4 file, which stays open. The picture is made to fit into `most` if need
    /// be, never larger. Only what is needed of the file is read, and no other file, whatever it refers to. Nothing,
    /// with the reason in `error`, if there is no good picture among the first few. Any thread.
    static std::optional<BWMoviePicture> read(int file, QSize most, QString *error = nullptr);

    /// Loads the libraries that reading and recording movies needs, so that the first time takes no longer. Any thread.
    static void prepare();
};
