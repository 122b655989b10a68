#pragma once

#include <chrono>
#include <optional>
#include <QImage>
#include <QSize>

/// What a cell of a grid shows of its element.
struct BWThumbnailValue {
    enum class State {
        Pending, ///< the picture is still being made
        Picture,
        NoPicture, ///< damaged, foreign or empty: there will be none
    };

    State state = State::Pending;
    QImage picture; ///< null unless there is one
    /// The element's own size in pixels, where it is known: gives the placeholder the shape of the picture to come, and
    /// keeps a small one from being enlarged.
    QSize naturalSize;
    bool isMovie = false;
    std::optional<std::chrono::milliseconds> length; ///< of a movie, once it is known
};
