#include "Model/LiveView/BWRenderRequest.h"

namespace {

/// The part of a `size` image after a clockwise rotation of the whole.
QRect rotated(const QRect &part, QSize size, int clockwise)
{
    const int right = size.width() - part.x() - part.width();
    const int below = size.height() - part.y() - part.height();
    switch (clockwise) {
    case 90:
        return {below, part.x(), part.height(), part.width()};
    case 180:
        return {right, below, part.width(), part.height()};
    case 270:
        return {part.y(), right, part.height(), part.width()};
    default:
        return part;
    }
}

QRect mirroredPart(const QRect &part, QSize size)
{
    return {size.width() - part.x() - part.width(), part.y(), part.width(), part.height()};
}

} // namespace

BWOrientation::BWOrientation(int rotation, BWFlip flip)
    // A vertical mirror is a horizontal one and half a turn; both mirrors are just the half turn.
    : m_mirrored(flip == BWFlip::Horizontal || flip == BWFlip::Vertical)
{
    const int halfTurn = flip == BWFlip::Vertical || flip == BWFlip::Both ? 180 : 0;
    const int quarters = ((rotation + halfTurn) % 360 + 360) % 360 / 90;
    m_clockwise = (4 - quarters) % 4 * 90;
}

QRect BWOrientation::toTurned(const QRect &part, QSize upright) const
{
    return rotated(m_mirrored ? mirroredPart(part, upright) : part, upright, m_clockwise);
}

QRect BWOrientation::toUpright(const QRect &part, QSize upright) const
{
    const QRect back = rotated(part, turned(upright), (360 - m_clockwise) % 360);
    return m_mirrored ? mirroredPart(back, upright) : back;
}

BWRenderRequest::BWRenderRequest(const BWLiveViewGeometry &geometry, QSize viewport, QPoint scroll, double ratio)
    : rotation(geometry.state().currentRotation()),
      flip(geometry.state().currentFlip()),
      frameSize(geometry.frameSize()),
      devicePixelRatio(ratio),
      m_geometry(geometry),
      m_viewport(viewport),
      m_scroll(scroll)
{
    const QSizeF footprint = geometry.footprint() * ratio;
    imageSize = footprint.toSize();
    // On whole device pixels, so that an unzoomed image stays as sharp as it is.
    target = (geometry.imageOrigin(viewport, scroll) * ratio).toPoint();
    const QSize deviceViewport = (QSizeF(viewport) * ratio).toSize();
    visible = QRect(-target, deviceViewport).intersected(QRect(QPoint(0, 0), imageSize));
}

BWRenderRequest BWRenderRequest::forPicture(QSize size) const
{
    if (visible.isEmpty() || size == picture())
        return *this;
    const BWLiveViewGeometry geometry(size, m_geometry.state());
    const QPoint scroll = geometry.scrollForMiddle(m_geometry.middle(m_viewport, m_scroll), m_viewport);
    return {geometry, m_viewport, scroll, devicePixelRatio};
}
