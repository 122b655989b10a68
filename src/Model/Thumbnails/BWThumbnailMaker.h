#pragma once

#include "Model/Thumbnails/BWJpegThumbnail.h"
#include "Model/Thumbnails/BWThumbnail.h"
#include "Model/Thumbnails/BWThumbnailFile.h"

/// A file looked at.
struct BWMadeThumbnail {
    BWThumbnail thumbnail{};
    std::optional<BWFileStamp> stamp{}; ///< of what was looked at; nothing where there is no regular file
    bool worthKeeping = false; ///< it says something about this stamp that will be true tomorrow
    bool unsettled = false; ///< the file changed just now and may still be written: worth another look soon
};

/// Makes the thumbnail of one file after the other: JPEG pictures and QuickTime movies, told by their contents. One
/// thread at a time.
class BWThumbnailMaker {
public:
    BWMadeThumbnail make(const QByteArray &path, BWThumbnailSize size);

private:
    BWThumbnail picture(const BWThumbnailFile &file, BWThumbnailSize size, QString &error);
    static BWThumbnail movie(const BWThumbnailFile &file, BWThumbnailSize size, QString &error);

    BWJpegThumbnail m_jpeg;
    std::vector<uint8_t> m_bytes; // of the last picture; its memory is used again
};
