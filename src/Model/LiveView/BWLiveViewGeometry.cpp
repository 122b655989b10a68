#include "Model/LiveView/BWLiveViewGeometry.h"

#include <algorithm>
#include <cmath>

void BWLiveViewState::setCurrentFlip(int index)
{
    m_flip = index >= 0 && index <= 3 ? static_cast<BWFlip>(index) : BWFlip::None;
}

void BWLiveViewState::zoomIn()
{
    if (m_zoom < largestZoom)
        m_zoom += 10;
}

void BWLiveViewState::zoomOut()
{
    // Not the mirror image of zoomIn(): a zoom between the steps, such as 55, may still go below 50 once.
    if (m_zoom >= 51)
        m_zoom -= 10;
}

QString BWLiveViewState::zoomText() const
{
    return QString::asprintf("%u%%", m_zoom);
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

QPointF BWLiveViewGeometry::middle(QSize viewport, QPoint scroll) const
{
    const QSizeF size = footprint();
    const auto share = [](int at, int visible, double document) {
        return document > visible ? (at + visible / 2.0) / document : 0.5;
    };
    return {share(scroll.x(), viewport.width(), size.width()), share(scroll.y(), viewport.height(), size.height())};
}

QPoint BWLiveViewGeometry::scrollForMiddle(QPointF middle, QSize viewport) const
{
    const QSizeF size = footprint();
    const QSize range = scrollRange(viewport);
    const auto scroll = [](double share, int visible, double document, int most) {
        return std::clamp(static_cast<int>(std::lround(share * document - visible / 2.0)), 0, most);
    };
    return {scroll(middle.x(), viewport.width(), size.width(), range.width()),
            scroll(middle.y(), viewport.height(), size.height(), range.height())};
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
