// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <QImage>
#include <QSize>

/// What stands for a file in the grid.
struct BWThumbnail {
    enum class Kind {
        Picture,
        Impossible, ///< damaged, empty, unreadable or not a picture; may become one when the file changes
    };

    Kind kind = Kind::Impossible;
    QImage image{}; ///< opaque and upright; null unless there is a picture
    std::optional<std::chrono::seconds> length{}; ///< of a movie that states it
};

/// The sizes in which thumbnails are kept, by the desktop as well as by us.
enum class BWThumbnailSize {
    Normal, ///< fits into 128 x 128 pixels
    Large, ///< into 256 x 256
    ExtraLarge, ///< into 500 x 500; the desktop allows 512
};

namespace BWThumbnailSizes {

constexpr std::array all{BWThumbnailSize::Normal, BWThumbnailSize::Large, BWThumbnailSize::ExtraLarge};

constexpr int pixels(BWThumbnailSize size)
{
    return size == BWThumbnailSize::Normal ? 128 : size == BWThumbnailSize::Large ? 256 : 500;
}

/// The smallest that is sharp in a cell of so many device pixels; the largest if none is.
constexpr BWThumbnailSize forPixels(int wanted)
{
    for (const BWThumbnailSize size : all) {
        if (pixels(size) >= wanted)
            return size;
    }
    return all.back();
}

/// A picture of that size fitted into the square: proportions kept, never enlarged, no side below one pixel.
inline QSize fitted(QSize picture, BWThumbnailSize size)
{
    const QSize most(pixels(size), pixels(size));
    if (picture.width() <= most.width() && picture.height() <= most.height())
        return picture;
    return picture.scaled(most, Qt::KeepAspectRatio).expandedTo({1, 1});
}

} // namespace BWThumbnailSizes
