#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Utils/BWFileClaim.h"

#include <QDateTime>
#include <QList>
#include <QStringList>
#include <QUrl>

/// A capture that an earlier run of the program left in a folder for temporary files: a picture or movie of this user's
/// own, whole and ready to be taken into an album.
struct BWOrphanedCapture {
    QUrl file;
    BWMediaType type = BWMediaType::Image;
    std::shared_ptr<BWFileClaim> claim; ///< keeps other runs away until the capture is in its album
};

/// Finds what a crashed run left behind. Touches files only; any thread.
class BWOrphanedCaptures {
public:
    BWOrphanedCaptures() = delete;

    /// Completes the movies among the captures that no running program claims in our private folders in these, and, as
    /// earlier versions left them, in these themselves. Removes those that hold nothing and those that have come into
    /// `album` already. What others may have put there, or has no room in the album, is left alone. Oldest first.
    static QList<BWOrphanedCapture> collect(const QStringList &temporaryFolders, const QUrl &album,
                                            const QDateTime &now = QDateTime::currentDateTime());

    /// Removes the halves of copies that a crash left in an album; the whole captures are still in the temporary folder.
    static void removeHalfCopies(const QUrl &album, const QDateTime &now = QDateTime::currentDateTime());
};
