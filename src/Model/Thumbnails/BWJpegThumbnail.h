#pragma once

#include "Model/Thumbnails/BWThumbnail.h"

#include <cstdint>
#include <memory>
#include <QImage>
#include <QString>
#include <span>

/// Makes small pictures of JPEG images, turned as their Exif data say. Skips most of the detail while decoding, so that
/// even a very large image takes little memory. Refuses incomplete images. One thread at a time.
class BWJpegThumbnail {
public:
    static constexpr int64_t largestFile = 192 << 20; ///< bytes; callers read none that is larger

    BWJpegThumbnail();
    ~BWJpegThumbnail();
    BWJpegThumbnail(const BWJpegThumbnail &) = delete;
    BWJpegThumbnail &operator=(const BWJpegThumbnail &) = delete;

    /// A null image, with the reason in `error`, if it is damaged, not a JPEG or absurdly large.
    QImage make(std::span<const uint8_t> jpeg, BWThumbnailSize size, QString *error = nullptr);

private:
    struct Picture;
    bool decode(std::span<const uint8_t> jpeg, const Picture &picture, int flags);

    void *m_decoder = nullptr;
    QImage m_scaled; // as decoded; its memory is used again
};
