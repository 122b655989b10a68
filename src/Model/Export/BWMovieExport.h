// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWSmallerMovie.h"
#include "Model/Export/BWExportResult.h"

#include <QList>

/// Makes movies of what is in an album: smaller ones, and movies from pictures. A file at the target is replaced only by a
/// complete movie; a cancelled or failed one leaves nothing, and the originals are only read. Any thread; returns when
/// all is done, cancelled or failed.
class BWMovieExport {
public:
    /// What the user chose last.
    struct Choices {
        BWSmallerMovie::Quality quality = BWSmallerMovie::Quality::Medium;
        int rate = 10; ///< pictures a second
    };
    static constexpr int mostRate = 60;

    static BWExportResult makeSmaller(const QUrl &movie, const QUrl &target, BWSmallerMovie::Quality quality,
                                      BWExportWatch &watch);

    /// The pictures in that order, so many a second, as a QuickTime movie. Its size is that which most of them have, upright;
    /// a picture of another size is made to fit, with black beside it. JPEGs that have the size are copied if all of them
    /// are alike, else encoded once. Damaged pictures, and those that are gone, are left
    /// out; but those that are copied are looked at only at both ends.
    static BWExportResult joinPictures(const QList<QUrl> &pictures, int rate, const QUrl &target, BWExportWatch &watch);

    /// In the order in which they were taken, by their names.
    static QList<QUrl> inOrder(QList<QUrl> pictures);
};
