#include "Model/LiveView/BWRenderRequest.h"

BWRenderRequest::BWRenderRequest(const BWLiveViewGeometry &geometry, QSize viewport, QPoint scroll,
                                 double devicePixelRatio)
    : rotation(geometry.state().currentRotation()), flip(geometry.state().currentFlip())
{
    const QSizeF footprint = geometry.footprint() * devicePixelRatio;
    imageSize = footprint.toSize();
    // On whole device pixels, so that an unzoomed image stays as sharp as it is.
    target = (geometry.imageOrigin(viewport, scroll) * devicePixelRatio).toPoint();
    const QSize deviceViewport = (QSizeF(viewport) * devicePixelRatio).toSize();
    visible = QRect(-target, deviceViewport).intersected(QRect(QPoint(0, 0), imageSize));
}
