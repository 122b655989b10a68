#pragma once

#include "Model/LiveView/BWLiveViewState.h"

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QTransform>

/// Where the live image lies. Lengths are in points (device-independent pixels).
///
/// frame() and transform() are in coordinates with y growing upwards and the origin at the lower left of the scroll
/// area's document; everything that tells about the viewport has y growing downwards, as widgets have it.
class BWLiveViewGeometry {
public:
    /// Height of the control bar that lies over the top of the scroll area.
    static constexpr int barHeight = 84;
    /// Vertical origin of the image's frame: half the bar, downwards, so that the picture looks centred below the bar.
    static constexpr double frameOriginY = -42;

    BWLiveViewGeometry() = default;
    /// `imageSize` is the camera's resolution in pixels; empty when there is no camera.
    BWLiveViewGeometry(QSize imageSize, const BWLiveViewState &state);

    /// The image unturned: origin (0, -42), size scaled by the zoom.
    QRectF frame() const { return m_frame; }
    /// Mirroring, then rotation, about the middle of the frame.
    QTransform transform() const;
    QPointF position() const { return m_frame.center(); }

    /// The size that the turned image takes up on the screen.
    QSizeF footprint() const;

    const BWLiveViewState &state() const { return m_state; }
    QSize imageSize() const { return m_imageSize; }

    /// How far the view can be scrolled in a viewport (the part of the scroll area below the bar) of that size.
    QSize scrollRange(QSize viewport) const;
    /// Upper left corner of the turned image in the viewport: centred along an axis on which it fits, else moved by
    /// the scroll position.
    QPointF imageOrigin(QSize viewport, QPoint scroll) const;

    /// The rectangle of the document that a clip view of `proposed`'s size may show: kept inside the document along an
    /// axis on which the document is larger, and set so that the document is centred along the others.
    static QRectF constrainBoundsRect(const QRectF &proposed, const QRectF &documentFrame);

private:
    QSize m_imageSize;
    BWLiveViewState m_state;
    QRectF m_frame{0, frameOriginY, 0, 0};
};
