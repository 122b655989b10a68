// SPDX-License-Identifier: GPL-3.0-or-later
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

/// How long a side of the picture is as it is drawn. What enlarges it lays the middles of the outermost pixels onto those of
/// the screen, so that each pixel is drawn a little larger than the zoom says.
double drawnLength(int pixels, double onScreen)
{
    return onScreen > pixels && pixels > 1 ? pixels * (onScreen - 1) / (pixels - 1) : onScreen;
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
    : devicePixelRatio(ratio), m_geometry(geometry), m_viewport(viewport), m_scroll(scroll)
{
    layOut(geometry.imageOrigin(viewport, scroll));
}

BWRenderRequest BWRenderRequest::placed(const BWLiveViewGeometry &geometry, QSize viewport, const BWPicturePlace &place,
                                        double ratio)
{
    BWRenderRequest request;
    if (geometry.imageSize().isEmpty() || place.width <= 0)
        return request;
    BWLiveViewState state = geometry.state();
    state.setScale(place.width / geometry.imageSize().width());
    request.devicePixelRatio = ratio;
    request.m_geometry = BWLiveViewGeometry(geometry.imageSize(), state);
    request.m_viewport = viewport;
    request.m_place = place;
    const QSizeF size = request.m_geometry.footprint();
    request.layOut(place.middle - QPointF(size.width(), size.height()) / 2);
    return request;
}

void BWRenderRequest::layOut(QPointF origin)
{
    rotation = m_geometry.state().currentRotation();
    flip = m_geometry.state().currentFlip();
    frameSize = m_geometry.frameSize();
    imageSize = (m_geometry.footprint() * devicePixelRatio).toSize();
    // On whole device pixels, so that an unzoomed image stays as sharp as it is.
    target = (origin * devicePixelRatio).toPoint();
    const QSize deviceViewport = (QSizeF(m_viewport) * devicePixelRatio).toSize();
    visible = QRect(-target, deviceViewport).intersected(QRect(QPoint(0, 0), imageSize));
}

QTransform BWRenderRequest::pictureToViewport() const
{
    const BWOrientation orientation(rotation, flip);
    const QSize upright = orientation.turned(imageSize);
    const QSize size = picture();
    if (upright.isEmpty() || size.isEmpty())
        return {};
    const QSizeF drawn(drawnLength(size.width(), upright.width()), drawnLength(size.height(), upright.height()));
    // From right to left, as each is applied to what the next one makes: sizes are those of whole device pixels.
    QTransform all;
    all.scale(1 / devicePixelRatio, 1 / devicePixelRatio);
    all.translate(target.x(), target.y());
    all.translate(imageSize.width() / 2.0, imageSize.height() / 2.0);
    all.rotate(orientation.clockwise());
    all.scale(orientation.mirrored() ? -1 : 1, 1);
    all.translate(-drawn.width() / 2, -drawn.height() / 2);
    all.scale(drawn.width(), drawn.height() * size.width() / size.height());
    return all;
}

BWRenderRequest BWRenderRequest::forPicture(QSize size) const
{
    if (visible.isEmpty() || size == picture())
        return *this;
    BWLiveViewState state = m_geometry.state();
    if (m_place)
        return placed(BWLiveViewGeometry(size, state), m_viewport, *m_place, devicePixelRatio);
    state.adaptTo(size, m_viewport);
    const BWLiveViewGeometry geometry(size, state);
    const QPointF middle = QRectF({}, m_viewport).center();
    const QPoint scroll = geometry.scrollFor(m_geometry.shareAt(middle, m_viewport, m_scroll), middle, m_viewport);
    return {geometry, m_viewport, scroll, devicePixelRatio};
}
