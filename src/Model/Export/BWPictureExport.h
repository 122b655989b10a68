// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Export/BWExportResult.h"
#include "Model/Measuring/BWPictureMetadata.h"

#include <QImage>
#include <QUrl>

/// A picture that the program has made, as a file. Any thread; waits for the disk.
class BWPictureExport {
public:
    BWPictureExport() = delete;

    /// Writes it as PNG if the target's name ends so, else as JPEG. A file there is replaced once all is well. Progress is
    /// that of writing; encoding can be cancelled, too.
    ///
    /// A JPEG gets the metadata, with the resolution that follows from its scale; a PNG has the image's resolution alone.
    static BWExportResult write(const QImage &picture, const QUrl &target, BWExportWatch &watch,
                                const BWPictureMetadata &metadata = {});
};
