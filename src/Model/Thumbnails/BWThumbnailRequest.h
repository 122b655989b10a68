#pragma once

#include "Model/Thumbnails/BWThumbnailMaker.h"

#include <QUrl>

/// What is wanted of a file.
struct BWThumbnailRequest {
    QUrl file;
    BWThumbnailSize size = BWThumbnailSize::Normal;
    bool known = false; ///< there is a thumbnail already, of what `knownStamp` says
    std::optional<BWFileStamp> knownStamp{};
};

/// What became of it.
struct BWThumbnailResult {
    BWThumbnailRequest request{};
    BWMadeThumbnail made{};
    bool unchanged = false; ///< the file is still what it was; `made` says nothing then
    bool toBeStored = false;
};
