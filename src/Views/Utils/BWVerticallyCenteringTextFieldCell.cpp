#include "Views/Utils/BWVerticallyCenteringTextFieldCell.h"

#include <QPainter>

namespace {
int flags(Qt::Alignment alignment)
{
    return static_cast<int>(alignment & Qt::AlignHorizontal_Mask) | Qt::AlignTop | Qt::TextWordWrap;
}
} // namespace

QRectF BWVerticallyCenteringTextFieldCell::titleRectForBounds(const QRectF &bounds, double textHeight)
{
    return {bounds.x(), bounds.y() + (bounds.height() - textHeight) * 0.5, bounds.width(), bounds.height()};
}

QRectF BWVerticallyCenteringTextFieldCell::titleRectForBounds(const QRectF &bounds) const
{
    const QRect room(0, 0, qRound(bounds.width()), QWIDGETSIZE_MAX);
    return titleRectForBounds(bounds, fontMetrics().boundingRect(room, flags(alignment()), text()).height());
}

void BWVerticallyCenteringTextFieldCell::drawInterior(QPainter &painter, const QRectF &frame) const
{
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(titleRectForBounds(frame), flags(alignment()) | Qt::TextDontClip, text());
}

void BWVerticallyCenteringTextFieldCell::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    QPainter painter(this);
    drawInterior(painter, contentsRect());
}
