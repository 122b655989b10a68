#include "Model/LiveView/BWRenderRequest.h"

BWRenderRequest::BWRenderRequest(const BWLiveViewGeometry &geometry, QSize viewport, QPoint scroll, double ratio)
    : rotation(geometry.state().currentRotation()),
      flip(geometry.state().currentFlip()),
      frameSize(geometry.frame().size()),
      devicePixelRatio(ratio)
{
    const QSizeF footprint = geometry.footprint() * ratio;
    imageSize = footprint.toSize();
    // On whole device pixels, so that an unzoomed image stays as sharp as it is.
    target = (geometry.imageOrigin(viewport, scroll) * ratio).toPoint();
    const QSize deviceViewport = (QSizeF(viewport) * ratio).toSize();
    visible = QRect(-target, deviceViewport).intersected(QRect(QPoint(0, 0), imageSize));
}
