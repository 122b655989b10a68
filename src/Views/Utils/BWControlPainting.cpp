#include "Views/Utils/BWControlPainting.h"

#include <QPainter>
#include <QPalette>
#include <QPen>

namespace {
constexpr double cornerRadius = 5;
constexpr double ringWidth = 2;
constexpr double hoverOpacity = 0.10;
constexpr double pressedOpacity = 0.20;
constexpr float checkedOpacity = 0.35F;
} // namespace

void drawBWControlPanel(QPainter &painter, const QRectF &rect, const QPalette &palette, const BWControlState &state)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double inset = ringWidth / 2;
    const QRectF panel = rect.adjusted(inset, inset, -inset, -inset);
    if (state.checked) {
        QColor ground = palette.color(QPalette::Highlight);
        painter.setPen(ground);
        ground.setAlphaF(checkedOpacity);
        painter.setBrush(ground);
        painter.drawRoundedRect(panel.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    }
    if (state.enabled && (state.hovered || state.pressed)) {
        QColor veil = palette.color(QPalette::WindowText);
        veil.setAlphaF(static_cast<float>(state.pressed ? pressedOpacity : hoverOpacity));
        painter.setPen(Qt::NoPen);
        painter.setBrush(veil);
        painter.drawRoundedRect(panel, cornerRadius, cornerRadius);
    }
    if (state.focused) {
        painter.setPen(QPen(palette.color(QPalette::Highlight), ringWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(panel, cornerRadius, cornerRadius);
    }
    painter.restore();
}
