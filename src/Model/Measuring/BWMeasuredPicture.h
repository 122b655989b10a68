// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Model/Measuring/BWPictureMetadata.h"

#include <QFont>
#include <QImage>
#include <QLocale>

/// A copy of a picture with all that was measured in it drawn into it. Any thread.
class BWMeasuredPicture {
public:
    /// What the view shows.
    struct Shown {
        BWFrame frame;
        BWLiveViewState state; ///< only its turn and mirroring matter
        QList<BWMeasurement> measurements;
        BWPictureScale scale;
        bool hasScaleBar = false;
        QString product{}; ///< that took the picture; null if unknown
        QFont font{}; ///< of texts on the screen
        QLocale locale{};
    };

    BWMeasuredPicture() = delete;

    /// One pixel to one of the picture's, turned and mirrored as it is shown. Lines and texts are as large in relation to it
    /// as on a screen. Null if it cannot be read.
    static QImage of(const Shown &shown);

    /// The scale of that copy. What is drawn in it is not said a second time.
    static BWPictureMetadata metadataOf(const Shown &shown);
};
