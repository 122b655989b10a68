// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Thumbnails/BWThumbnail.h"

#include <cstdint>
#include <memory>
#include <QImage>
#include <QString>
#include <span>

/// Decodes JPEG images, small or whole, turned as their Exif data say. One thread at a time.
class BWJpegPicture {
public:
    static constexpr int64_t largestFile = 192 << 20; ///< bytes; callers read none that is larger

    BWJpegPicture();
    ~BWJpegPicture();
    BWJpegPicture(const BWJpegPicture &) = delete;
    BWJpegPicture &operator=(const BWJpegPicture &) = delete;

    /// A small picture. Skips most of the detail while decoding, so that even a very large image takes little memory.
    /// Refuses incomplete images: a null image, with the reason in `error`, for one that is damaged, not a JPEG or
    /// absurdly large.
    QImage thumbnail(std::span<const uint8_t> jpeg, BWThumbnailSize size, QString *error = nullptr);

    struct Whole {
        QImage image{}; ///< 32-bit and opaque; null if nothing of it could be decoded
        bool damaged = false; ///< what could not be decoded is grey, or wrong
        bool tooLarge = false; ///< has more pixels; if it is neither, there is no memory for it
        QString error{}; ///< what is wrong, for the log
    };
    /// How the Exif data say that an image is to be turned: mirrored left to right first, then clockwise.
    struct Turn {
        bool mirrored = false;
        int degrees = 0; ///< clockwise, a multiple of 90

        bool isNone() const { return !mirrored && degrees == 0; }
    };
    static Turn turnOf(std::span<const uint8_t> jpeg);

    /// The image in its own size, if it has no more pixels than that.
    Whole whole(std::span<const uint8_t> jpeg, int64_t mostPixels);

private:
    struct Picture;
    bool open(std::span<const uint8_t> jpeg, Picture &picture);
    bool decode(std::span<const uint8_t> jpeg, const Picture &picture, QImage &image);
    bool decode(std::span<const uint8_t> jpeg, const Picture &picture, QImage &image, int flags);
    QString error() const;
    void reset();

    void *m_decoder = nullptr;
    QImage m_scaled; // as decoded; its memory is used again
};
