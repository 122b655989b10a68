#pragma once

#include "Model/LiveView/BWLiveViewState.h"

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QTransform>

/// Where the live image lies. Lengths are in points (device-independent pixels); what tells about the viewport has y
/// growing downwards, as widgets have it.
class BWLiveViewGeometry {
public:
    /// Height of the control bar that lies over the top of the scroll area. The picture is centred in what is left, so
    /// its middle lies half the bar, 42 points, below that of the scroll area.
    static constexpr int barHeight = 84;

    BWLiveViewGeometry() = default;
    bool operator==(const BWLiveViewGeometry &) const = default;
    /// `imageSize` is the camera's resolution in pixels; empty when there is no camera.
    BWLiveViewGeometry(QSize imageSize, const BWLiveViewState &state);

    /// The image unturned, scaled by the zoom.
    QSizeF frameSize() const { return QSizeF(m_imageSize) * (m_state.currentZoom() / 100.0); }
    /// Mirroring, then rotation, about the middle of the image; y grows upwards.
    QTransform transform() const;

    /// The size that the turned image takes up on the screen.
    QSizeF footprint() const;

    const BWLiveViewState &state() const { return m_state; }
    QSize imageSize() const { return m_imageSize; }

    /// How far the view can be scrolled in a viewport (the part of the scroll area below the bar) of that size.
    QSize scrollRange(QSize viewport) const;
    /// Which point of the turned image lies in the middle of the viewport, as a share of its size; the image's own
    /// middle along an axis on which it fits.
    QPointF middle(QSize viewport, QPoint scroll) const;
    /// How far to scroll for that point to be in the middle, or as near to it as can be.
    QPoint scrollForMiddle(QPointF middle, QSize viewport) const;
    /// Upper left corner of the turned image in the viewport: centred along an axis on which it fits, else moved by
    /// the scroll position.
    QPointF imageOrigin(QSize viewport, QPoint scroll) const;

    /// The rectangle of the document that a clip view of `proposed`'s size may show: kept inside the document along an
    /// axis on which the document is larger, and set so that the document is centred along the others.
    static QRectF constrainBoundsRect(const QRectF &proposed, const QRectF &documentFrame);

private:
    QSize m_imageSize{0, 0};
    BWLiveViewState m_state;
};
