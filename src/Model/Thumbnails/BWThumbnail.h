#pragma once

#include <chrono>
#include <optional>
#include <QImage>

/// What stands for a file in the grid.
struct BWThumbnail {
    enum class Kind {
        Picture,
        Impossible, ///< damaged, empty, unreadable, no picture at all; it may become one when the file changes
    };

    Kind kind = Kind::Impossible;
    QImage image{}; ///< opaque and upright; null unless there is a picture
    std::optional<std::chrono::seconds> length{}; ///< of a movie that tells it
};
