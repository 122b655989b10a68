// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "Model/LiveView/BWScene.h"

#include <QImage>
#include <QPoint>
#include <QSize>

/// Two pictures that are compared as one picture, as it is saved. Any thread.
class BWComparisonPicture {
public:
    /// What the view shows, and where.
    struct Shown {
        BWScene scene;
        QSize viewport; ///< points, as the next
        QPoint scroll;
        BWFrame main;
        BWFrame reference;
    };

    static constexpr qint64 mostPixels = 100'000'000;

    BWComparisonPicture() = delete;

    /// Both turned, mirrored and laid to each other as they are shown, whatever part of them the view shows. Side by side:
    /// all of both, with the same field of view and as many pixels as the finer of the two has. Otherwise what the main
    /// picture covers, one pixel to one of its own. Smaller, if that were more than `mostPixels`. Null if the main picture
    /// cannot be read.
    static QImage of(const Shown &shown);
};
