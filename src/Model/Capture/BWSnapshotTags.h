// SPDX-License-Identifier: GPL-3.0-or-later
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
    BWPictureMetadata scale{}; ///< added, with the resolution, if it says anything; with measurements, too
    QString measuredIn{}; ///< pictures of that shape or resolution (BWCalibration): in others they would be elsewhere

    /// The JPEG image with these tags in an Exif segment (Exif 2.31). The image itself stays as it is, byte for byte.
    /// An image that already has an Exif segment gets none but scale and measurements; what is not a JPEG is returned unchanged.
    QByteArray addedTo(const QByteArray &jpeg) const;
};
