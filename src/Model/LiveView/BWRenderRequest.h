#pragma once

#include "Model/LiveView/BWLiveViewGeometry.h"

#include <QPoint>
#include <QRect>
#include <QSize>

/// Which part of the live image is to be drawn, and how, in device pixels.
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

    /// The size of the camera's pictures that it is for, in pixels.
    QSize picture() const { return m_geometry.imageSize(); }
    /// The same look at a picture of another size, as if that were the camera's: the point in the middle stays there.
    BWRenderRequest forPicture(QSize size) const;

    bool operator==(const BWRenderRequest &) const = default;

private:
    BWLiveViewGeometry m_geometry;
    QSize m_viewport;
    QPoint m_scroll;
};
