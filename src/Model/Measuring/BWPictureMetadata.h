// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurement.h"

#include <QByteArray>
#include <QString>

/// What stands between a picture file and its measurements. For each there is one sentence (BWPictureFile::problemText()).
enum class BWPictureProblem {
    None,
    Partly, ///< some of what the file says cannot be read; it stays in the file
    NotJpeg,
    Damaged, ///< the file, before the picture begins
    DescriptionDamaged, ///< its XMP
    Newer, ///< written by a version of the program that may mean other things by the same words
    NoRoom, ///< what other programs wrote, together with ours, is more than a file of this format can hold
    Changed, ///< by another program since it was read
    Gone,
    Unreadable,
    NotWritable,
    DiskFull,
    Failed,
};

/// Scale and measurements as they travel with a picture file, in the picture's metadata. docs/METADATA.md tells how.
struct BWPictureMetadata {
    BWCalibration calibration; ///< null: none. Of this picture alone: it has no other fields
    BWLengthUnit unit = BWLengthUnit::Millimetre;
    QString product; ///< that took the picture; null if unknown
    QList<BWMeasurement> measurements;

    bool operator==(const BWPictureMetadata &) const = default;

    struct Read;
    struct Written;

    /// What a JPEG file says. Never fails to return what can be read.
    static Read from(const QByteArray &jpeg);

    /// The JPEG file with this in place of what it said before. The picture and all that other programs have put there stay
    /// byte for byte, but for the resolution, which follows the scale, and the form of XMP, whose content stays. What the
    /// file has of ours and this program cannot read stays, too. Without a calibration the resolution stays as it is.
    Written addedTo(const QByteArray &jpeg) const;
};

struct BWPictureMetadata::Read {
    BWPictureMetadata metadata;
    QSize size; ///< of the picture, in pixels; empty if it is unknown
    BWPictureProblem problem = BWPictureProblem::None;
    QString detail; ///< for the log; null without a problem
};

struct BWPictureMetadata::Written {
    QByteArray jpeg; ///< null unless there is no problem
    BWPictureProblem problem = BWPictureProblem::None;
    QString detail;
};
