// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWLiveViewGeometry.h"

#include <algorithm>
#include <cmath>

void BWLiveViewState::setCurrentFlip(int index)
{
    m_flip = index >= 0 && index <= 3 ? static_cast<BWFlip>(index) : BWFlip::None;
}

unsigned BWLiveViewState::currentZoom() const
{
    return static_cast<unsigned>(std::lround(m_scale * 100));
}

void BWLiveViewState::setCurrentZoom(unsigned percent)
{
    m_scale = percent / 100.0;
    m_sizing = Sizing::Steps;
}

void BWLiveViewState::setScale(double scale)
{
    m_scale = scale;
    m_sizing = Sizing::Free;
}

void BWLiveViewState::scaleBy(double factor)
{
    const double smallest = std::min(m_scale, smallestZoom / 100.0);
    const double largest = std::max(m_scale, largestZoom / 100.0);
    setScale(std::clamp(m_scale * factor, smallest, largest));
}

void BWLiveViewState::setFitsWindow(bool fits)
{
    if (fits != fitsWindow())
        m_sizing = fits ? Sizing::Fit : Sizing::Free;
}

void BWLiveViewState::adaptTo(QSize imageSize, QSize viewport)
{
    if (!fitsWindow() || imageSize.isEmpty() || viewport.isEmpty())
        return;
    const QSizeF turned = BWLiveViewGeometry(imageSize, *this).footprint() / m_scale;
    m_scale = std::min(viewport.width() / turned.width(), viewport.height() / turned.height());
}

void BWLiveViewState::zoomIn()
{
    const unsigned zoom = currentZoom();
    if (zoom >= largestZoom)
        return;
    // Rounding must not make two steps of one.
    const double next = 10 * (std::floor(m_scale * 10 + 1e-6) + 1);
    setCurrentZoom(m_sizing == Sizing::Steps ? zoom + 10 : static_cast<unsigned>(next));
}

void BWLiveViewState::zoomOut()
{
    const unsigned zoom = currentZoom();
    // Not the mirror image of zoomIn(): a zoom between the steps, such as 55, may still go below 50 once.
    if (zoom <= smallestZoom)
        return;
    const double next = std::min(10 * (std::ceil(m_scale * 10 - 1e-6) - 1), double{largestZoom});
    setCurrentZoom(m_sizing == Sizing::Steps ? zoom - 10 : static_cast<unsigned>(next));
}

QString BWLiveViewState::zoomText() const
{
    return QString::asprintf("%u%%", currentZoom());
}

int BWLiveViewState::rotationFromTitle(const QString &title)
{
    return title.toInt();
}

BWLiveViewGeometry::BWLiveViewGeometry(QSize imageSize, const BWLiveViewState &state)
    : m_imageSize(imageSize.isValid() ? imageSize : QSize(0, 0)), m_state(state)
{
}

QTransform BWLiveViewGeometry::transform() const
{
    QTransform transform;
    transform.rotate(m_state.currentRotation());
    // Applied to the rotated transform, hence before the rotation as the image sees it.
    switch (m_state.currentFlip()) {
    case BWFlip::None:
        break;
    case BWFlip::Horizontal:
        transform.scale(-1, 1);
        break;
    case BWFlip::Vertical:
        transform.scale(1, -1);
        break;
    case BWFlip::Both:
        transform.scale(-1, -1);
        break;
    }
    return transform;
}

QSizeF BWLiveViewGeometry::footprint() const
{
    return transform().mapRect(QRectF({}, frameSize())).size();
}

QSize BWLiveViewGeometry::scrollRange(QSize viewport) const
{
    const QSizeF size = footprint();
    const auto surplus = [](double document, int visible) {
        // Ignores what rounding leaves over.
        return std::max(0, static_cast<int>(std::ceil(document - visible - 1e-6)));
    };
    return {surplus(size.width(), viewport.width()), surplus(size.height(), viewport.height())};
}

QPointF BWLiveViewGeometry::shareAt(QPointF at, QSize viewport, QPoint scroll) const
{
    const QSizeF size = footprint();
    if (size.isEmpty())
        return {0.5, 0.5};
    const QPointF inside = at - imageOrigin(viewport, scroll);
    return {inside.x() / size.width(), inside.y() / size.height()};
}

QPoint BWLiveViewGeometry::scrollFor(QPointF share, QPointF at, QSize viewport) const
{
    const QSizeF size = footprint();
    const QSize range = scrollRange(viewport);
    const auto scroll = [](double inside, double place, int most) {
        return std::clamp(static_cast<int>(std::lround(inside - place)), 0, most);
    };
    return {scroll(share.x() * size.width(), at.x(), range.width()),
            scroll(share.y() * size.height(), at.y(), range.height())};
}

QPointF BWLiveViewGeometry::imageOrigin(QSize viewport, QPoint scroll) const
{
    const QSizeF size = footprint();
    const QRectF visible = constrainBoundsRect(QRectF(scroll, QSizeF(viewport)), QRectF(QPointF(0, 0), size));
    return -visible.topLeft();
}

QRectF BWLiveViewGeometry::constrainBoundsRect(const QRectF &proposed, const QRectF &documentFrame)
{
    const auto keepInside = [](double origin, double length, double documentOrigin, double documentLength) {
        const double last = documentOrigin + documentLength - length;
        return std::max(documentOrigin, std::min(origin, last));
    };
    QRectF constrained = proposed;
    constrained.moveLeft(keepInside(proposed.x(), proposed.width(), documentFrame.x(), documentFrame.width()));
    constrained.moveTop(keepInside(proposed.y(), proposed.height(), documentFrame.y(), documentFrame.height()));
    if (constrained.width() > documentFrame.width())
        constrained.moveLeft((constrained.width() - documentFrame.width()) * -0.5);
    if (constrained.height() > documentFrame.height())
        constrained.moveTop((constrained.height() - documentFrame.height()) * -0.5);
    return constrained;
}
