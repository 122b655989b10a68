#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QTransform>

/// Mirroring of the live image, applied in the image's own axes before the rotation. The numbers are the positions in
/// the flip menu.
enum class BWFlip { None = 0, Horizontal = 1, Vertical = 2, Both = 3 };

/// How the live image is being looked at. Never stored: every start begins unzoomed, unturned and unmirrored.
class BWLiveViewState {
public:
    static constexpr unsigned largestZoom = 200; ///< percent, by the steps of zoomIn()

    /// Percent; 100 shows one image pixel per point.
    unsigned currentZoom() const { return m_zoom; }
    /// Degrees, counter-clockwise.
    int currentRotation() const { return m_rotation; }
    BWFlip currentFlip() const { return m_flip; }

    void setCurrentZoom(unsigned percent) { m_zoom = percent; }
    void setCurrentRotation(int degrees) { m_rotation = degrees; }
    /// Anything but 0 to 3 is no mirroring.
    void setCurrentFlip(int index);

    /// Ten percent more, if below `largestZoom`.
    void zoomIn();
    /// Ten percent less, if 51 or more.
    void zoomOut();
    /// The zoom as shown to the user: "110%".
    QString zoomText() const;

    /// The angle in a menu title such as "90"; 0 for a title that is no number.
    static int rotationFromTitle(const QString &title);

    bool operator==(const BWLiveViewState &) const = default;

private:
    unsigned m_zoom = 100;
    int m_rotation = 0;
    BWFlip m_flip = BWFlip::None;
};

/// Where the live image lies. Lengths are in points (device-independent pixels); those of the viewport have y growing
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
    /// The scroll position that puts that point in the middle, or as near to it as possible.
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
