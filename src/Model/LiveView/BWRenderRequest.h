// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/LiveView/BWLiveViewGeometry.h"

#include <optional>
#include <QPoint>
#include <QRect>
#include <QSize>

/// Mirroring and rotation of the live image, reduced to the two steps in which pixels are moved: an optional
/// left-right mirror, then a clockwise quarter-turn rotation. Rectangles are in pixels with y growing downwards.
class BWOrientation {
public:
    /// `rotation` is counter-clockwise in degrees; what is no multiple of 90 is taken as the next lower one.
    BWOrientation(int rotation, BWFlip flip);

    bool mirrored() const { return m_mirrored; }
    /// 0, 90, 180 or 270.
    int clockwise() const { return m_clockwise; }
    bool swapsSides() const { return m_clockwise == 90 || m_clockwise == 270; }

    QSize turned(QSize upright) const { return swapsSides() ? upright.transposed() : upright; }

    /// Where a part of the upright image lies in the turned image. `upright` is the size of the whole upright image.
    QRect toTurned(const QRect &part, QSize upright) const;
    /// The reverse: where a part of the turned image comes from.
    QRect toUpright(const QRect &part, QSize upright) const;

private:
    bool m_mirrored;
    int m_clockwise;
};

/// Where a picture lies in its part of the view, in points.
struct BWPicturePlace {
    QPointF middle;
    double width = 0; ///< of the picture as it is before it is turned

    BWPicturePlace movedBy(QPointF distance) const { return {middle + distance, width}; }
    /// Larger by that factor; the point of the picture that lies at `about` stays there.
    BWPicturePlace scaledBy(double factor, QPointF about) const
    {
        return {about + (middle - about) * factor, width * factor};
    }
    bool operator==(const BWPicturePlace &) const = default;
};

/// Which part of a picture is to be drawn, and how, in device pixels.
struct BWRenderRequest {
    QSize imageSize; ///< the whole image after zoom and rotation
    QRect visible; ///< the part of it that the viewport shows; empty when nothing is to be drawn
    QPoint target; ///< where the upper left corner of the whole image lies in the viewport
    int rotation = 0; ///< counter-clockwise, a multiple of 90
    BWFlip flip = BWFlip::None;
    QSizeF frameSize; ///< the zoomed image before it is turned, in points
    double devicePixelRatio = 1;

    BWRenderRequest() = default;
    /// `viewport` and `scroll` in points; `ratio` is that of device pixels to them.
    BWRenderRequest(const BWLiveViewGeometry &geometry, QSize viewport, QPoint scroll, double ratio);
    /// Of a picture that may lie anywhere. Its size on the screen is that of `place`, not of the geometry's zoom.
    static BWRenderRequest placed(const BWLiveViewGeometry &geometry, QSize viewport, const BWPicturePlace &place,
                                  double ratio);

    /// The size of the pictures that it is for, in pixels.
    QSize picture() const { return m_geometry.imageSize(); }
    /// From places in the picture, in widths of it from its upper left corner, to points of the viewport.
    QTransform pictureToViewport() const;
    /// The same look at a picture of another size, as if it had been that: the point in the middle stays there.
    BWRenderRequest forPicture(QSize size) const;

    bool operator==(const BWRenderRequest &) const = default;

private:
    void layOut(QPointF origin);

    BWLiveViewGeometry m_geometry;
    QSize m_viewport;
    QPoint m_scroll;
    std::optional<BWPicturePlace> m_place; // in place of the scroll position
};
