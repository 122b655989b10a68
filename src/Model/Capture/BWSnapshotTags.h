#pragma once

#include "Model/Measuring/BWPictureMetadata.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// What a snapshot says about itself.
struct BWSnapshotTags {
    QDateTime taken; ///< with its offset from UTC
    QString camera; ///< the product; null to leave it out
    QString software; ///< name and version
    BWPictureMetadata scale{}; ///< added, with the resolution, if it has a calibration

    /// The JPEG image with these tags in an Exif segment (Exif 2.31). The image itself stays as it is, byte for byte.
    /// An image that already has an Exif segment gets none but the scale; what is not a JPEG is returned unchanged.
    QByteArray addedTo(const QByteArray &jpeg) const;
};
