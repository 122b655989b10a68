// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWPictureMetadata.h"
#include "Model/Thumbnails/BWJpegPicture.h"

#include <cstdint>
#include <QUrl>

class BWLocalizationManager;

/// By which a file is known again when it has been renamed.
struct BWFileIdentity {
    uint64_t disk = 0;
    uint64_t number = 0; ///< 0: not known

    bool operator==(const BWFileIdentity &) const = default;
};

/// Reads what picture files say of scale and measurements, and saves it in them. Waits for the disk. Any thread.
class BWPictureFile {
public:
    BWPictureFile() = delete;

    struct Read : BWPictureMetadata::Read {
        QByteArray fingerprint; ///< of all its bytes; null if they could not be read
        BWFileIdentity identity;
        BWJpegPicture::Turn turn; ///< from the picture as it is stored to the one that is shown
    };
    static Read read(const QUrl &file);

    struct Saved {
        BWPictureProblem problem = BWPictureProblem::None;
        QString detail; ///< for the log, which has it already; null without a problem
        QByteArray fingerprint; ///< to save again, as the next
        BWFileIdentity identity{};
    };
    /// Replaces the metadata in the file, if its bytes still are those of `fingerprint`. At every moment there is either the
    /// old file or the new one, whole; the new one is on the disk when this returns. A link is followed, and a file that was
    /// renamed within its folder is found by its identity, if given. Owner, rights and attributes of the file stay; its date
    /// becomes the present one, so that other programs see that it has changed.
    static Saved save(const QUrl &file, const BWPictureMetadata &metadata, const QByteArray &fingerprint,
                      const BWFileIdentity &identity = {});

    /// One plain sentence for whoever wanted it; null for none.
    static QString problemText(BWPictureProblem problem, BWLocalizationManager &texts);
};
