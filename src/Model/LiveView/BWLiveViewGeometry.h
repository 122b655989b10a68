// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QTransform>

/// Mirroring of the live image, applied in the image's own axes before the rotation. The numbers are the positions in
/// the flip menu.
enum class BWFlip { None = 0, Horizontal = 1, Vertical = 2, Both = 3 };

/// How a picture is being looked at. Never stored: every start begins unzoomed, unturned and unmirrored.
class BWLiveViewState {
public:
    static constexpr unsigned largestZoom = 200; ///< percent, by the steps of zoomIn()
    static constexpr unsigned smallestZoom = 50; ///< by fingers, unless it was less before

    /// Percent, rounded; 100 shows one image pixel per point.
    unsigned currentZoom() const;
    /// The same as a factor, and exact.
    double scale() const { return m_scale; }
    /// Whether the whole turned picture is kept as large as the window allows.
    bool fitsWindow() const { return m_sizing == Sizing::Fit; }
    /// Degrees, counter-clockwise.
    int currentRotation() const { return m_rotation; }
    BWFlip currentFlip() const { return m_flip; }

    void setCurrentZoom(unsigned percent);
    /// Any zoom from a `smallestZoom` to a `largestZoom`, or beyond as far as it is already.
    void scaleBy(double factor);
    /// Any zoom at all.
    void setScale(double scale);
    /// Begins or ends fitting, which changes nothing before adaptTo().
    void setFitsWindow(bool fits);
    /// If fitsWindow(), zooms so that all of a picture of that size can be seen in a viewport of that size, in points.
    void adaptTo(QSize imageSize, QSize viewport);
    void setCurrentRotation(int degrees) { m_rotation = degrees; }
    /// Anything but 0 to 3 is no mirroring.
    void setCurrentFlip(int index);

    /// Ten percent more, if below `largestZoom`; from a zoom by fitting or by fingers, the next multiple of ten.
    void zoomIn();
    /// Ten percent less, if 51 or more, or the next multiple of ten.
    void zoomOut();
    /// The zoom as shown to the user: "110%".
    QString zoomText() const;

    /// The angle in a menu title such as "90"; 0 for a title that is no number.
    static int rotationFromTitle(const QString &title);

    bool operator==(const BWLiveViewState &) const = default;

private:
    enum class Sizing { Steps, Free, Fit };

    double m_scale = 1;
    Sizing m_sizing = Sizing::Steps;
    int m_rotation = 0;
    BWFlip m_flip = BWFlip::None;
};

/// Where a picture lies. Lengths are in points (device-independent pixels); those of the viewport have y growing
/// downwards, as in widgets.
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
    QSizeF frameSize() const { return QSizeF(m_imageSize) * m_state.scale(); }
    /// Mirroring, then rotation, about the middle of the image; y grows upwards.
    QTransform transform() const;

    /// The size that the turned image takes up on the screen.
    QSizeF footprint() const;

    const BWLiveViewState &state() const { return m_state; }
    QSize imageSize() const { return m_imageSize; }

    /// How far the view can be scrolled in a viewport (the part of the scroll area below the bar) of that size.
    QSize scrollRange(QSize viewport) const;
    /// Which point of the turned image lies at `at` in the viewport, as a share of its size.
    QPointF shareAt(QPointF at, QSize viewport, QPoint scroll) const;
    /// The scroll position that puts that point there, or as near to it as possible.
    QPoint scrollFor(QPointF share, QPointF at, QSize viewport) const;
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
