#pragma once

#include <chrono>
#include <optional>
#include <QImage>

/// What a movie looks like from outside: its first good picture, and how long it is.
struct BWMoviePicture {
    QImage image; ///< opaque, upright, with square pixels
    std::optional<std::chrono::milliseconds> length; ///< nothing for a movie that does not tell it

    /// Reads them from an open QuickTime or MP4 file, which stays open. The picture fits into `most`; it is made smaller
    /// where need be, never larger. Only what is needed of the file is read, and nothing but this file, whatever it
    /// refers to. Nothing, with the reason in `error`, if there is no good picture among the first few. Any thread.
    static std::optional<BWMoviePicture> read(int file, QSize most, QString *error = nullptr);
};
