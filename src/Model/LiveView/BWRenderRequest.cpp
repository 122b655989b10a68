#include "Model/LiveView/BWRenderRequest.h"

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
