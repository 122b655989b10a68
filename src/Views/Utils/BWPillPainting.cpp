#include "Views/Utils/BWPillPainting.h"

#include <algorithm>
#include <QPainter>

void drawBWPill(QPainter &painter, const QRectF &rect)
{
    const double radius = std::min(rect.height() / 2, 14.0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(24, 24, 26, 205));
    painter.drawRoundedRect(rect, radius, radius);
    painter.restore();
}
