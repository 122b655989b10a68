// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWRenderRequest.h"

#include <QPointF>
#include <QRect>
#include <QSize>

/// How a picture lies beside another one that shows the same thing: how much larger it appears, and how far aside. Lengths
/// are in widths of the other, so that it follows that one in every zoom and position.
class BWAlignment {
public:
    /// Where the picture lies when the other lies at `main`. At first both show as much and have one middle.
    BWPicturePlace follow(const BWPicturePlace &main) const;
    /// What follow() gives from now on for these two places.
    void align(const BWPicturePlace &main, const BWPicturePlace &reference);

    bool operator==(const BWAlignment &) const = default;

private:
    double m_ratio = 1;
    QPointF m_offset;
};

/// What the view shows: the main picture, and perhaps a reference to compare it with. A plain value; lengths are in points,
/// in the viewport unless they are said to be in one picture's area of it.
class BWScene {
public:
    enum class Mode {
        Single, ///< the main picture alone
        SideBySide, ///< the main picture on the left
        Overlay, ///< the reference over it, as opaque as `share`
        Divider, ///< the reference on the right of a line, which is at `share` of the width
    };

    BWScene() = default;
    explicit BWScene(const BWLiveViewGeometry &picture) : mainPicture(picture) { }

    Mode mode = Mode::Single;
    BWLiveViewGeometry mainPicture;
    BWLiveViewGeometry referencePicture; ///< how large it is drawn is decided by the alignment
    BWAlignment alignment;
    double share = 0.5; ///< from 0 to 1

    static constexpr int gap = 6; ///< between pictures side by side

    bool operator==(const BWScene &) const = default;

    bool hasReference() const { return mode != Mode::Single; }
    QRect mainArea(QSize viewport) const;
    QRect referenceArea(QSize viewport) const;
    /// The part of its area in which a picture shows.
    QRect mainClip(QSize viewport) const;
    QRect referenceClip(QSize viewport) const;
    /// Left edge of the reference behind a dividing line.
    int dividerPosition(QSize viewport) const;
    double referenceOpacity() const { return mode == Mode::Overlay ? share : 1; }

    /// Where the pictures lie in their areas. `scroll` is the main picture's scroll position.
    BWPicturePlace mainPlace(QSize viewport, QPoint scroll) const;
    BWPicturePlace referencePlace(QSize viewport, QPoint scroll) const;
    /// What is to be drawn in their areas. `ratio` is that of device pixels to points.
    BWRenderRequest mainRequest(QSize viewport, QPoint scroll, double ratio) const;
    BWRenderRequest referenceRequest(QSize viewport, QPoint scroll, double ratio) const;
};
