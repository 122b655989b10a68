#pragma once

#include <QString>

/// What completing a movie came to.
enum class BWMovieCompletion {
    Completed, ///< it is a plain movie now
    Plain, ///< it was one already; nothing was changed
    Empty, ///< there is no whole picture in it; nothing was changed
    Failed, ///< it is no movie of ours, or cannot be read or written; it is as good as before
};

/// Makes a plain QuickTime movie with an index out of one that was written in fragments of one picture each, in place
/// and without copying a picture, however far the writing had come: what follows the last whole picture is cut off.
///
/// The index goes behind the pictures. Then the header in front of them is turned, by one write of a few bytes, into
/// that of a media data box which holds all the fragments: before it the file is a good fragmented movie, after it a
/// good plain one. Any thread; `error` gets the reason of a failure.
BWMovieCompletion completeMovie(const QString &path, QString *error = nullptr);
