#pragma once

#include "Model/Thumbnails/BWThumbnail.h"

#include <cstdint>
#include <memory>
#include <QImage>
#include <QString>
#include <span>

/// Makes small pictures of JPEG images, turned as their Exif data say. Most of an image's detail is left out while it
/// is being decoded, so that even a very large one takes little memory. An image has to be whole. One thread at a time.
class BWJpegThumbnail {
public:
    BWJpegThumbnail();
    ~BWJpegThumbnail();
    BWJpegThumbnail(const BWJpegThumbnail &) = delete;
    BWJpegThumbnail &operator=(const BWJpegThumbnail &) = delete;

    /// A null image, with the reason in `error`, for what is damaged, foreign or beyond any sense.
    QImage make(std::span<const uint8_t> jpeg, BWThumbnailSize size, QString *error = nullptr);

private:
    struct Picture;
    bool decode(std::span<const uint8_t> jpeg, const Picture &picture, int flags);

    void *m_decoder = nullptr;
    QImage m_scaled; // as decoded; its memory is used again
};
