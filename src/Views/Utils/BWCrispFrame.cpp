// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWCrispFrame.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <QPixmap>

void drawBWPixmap(QPainter &painter, QPointF corner, const QPixmap &pixmap)
{
    const QTransform device = painter.deviceTransform();
    const double ratio = pixmap.devicePixelRatio();
    if (device.type() > QTransform::TxScale || !qFuzzyCompare(device.m11(), ratio)) { // onto another kind of surface
        painter.drawPixmap(corner, pixmap);
        return;
    }
    painter.save();
    painter.scale(1 / ratio, 1 / ratio);
    painter.drawPixmap(QRectF(corner * ratio, QSizeF(pixmap.size())), pixmap, QRectF(pixmap.rect()));
    painter.restore();
}

double bwLineWidth(const QPainter &painter, double width)
{
    const double ratio = painter.deviceTransform().m11();
    return ratio > 0 ? std::max(1.0, std::round(width * ratio)) / ratio : width;
}

BWCrispFrame::BWCrispFrame(const QPainter &painter, const QRectF &outer, double lineWidth)
    : width(bwLineWidth(painter, lineWidth))
{
    const QTransform device = painter.deviceTransform();
    const QRectF mapped = device.mapRect(outer);
    const QPointF first(std::round(mapped.left()), std::round(mapped.top()));
    const QPointF behind(std::round(mapped.right()), std::round(mapped.bottom()));
    const double inset = width / 2;
    rect = device.inverted().mapRect(QRectF(first, behind)).adjusted(inset, inset, -inset, -inset);
}
