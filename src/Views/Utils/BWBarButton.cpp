// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWBarButton.h"

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
        QColor fill = palette.color(QPalette::Highlight);
        painter.setPen(fill);
        fill.setAlphaF(checkedOpacity);
        painter.setBrush(fill);
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

BWBarButton::BWBarButton(QWidget *parent) : QToolButton(parent)
{
    setAutoRaise(true);
    setFocusPolicy(Qt::StrongFocus);
}

void BWBarButton::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!m_doubleClickIsClick)
        QToolButton::mouseDoubleClickEvent(event);
}

void BWBarButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawBWControlPanel(painter, rect(), palette(),
                       {.enabled = isEnabled(),
                        .hovered = underMouse(),
                        .pressed = isDown(),
                        .focused = hasFocus(),
                        .checked = isChecked()});
    QRect place(QPoint(), iconSize());
    place.moveCenter(rect().center());
    icon().paint(&painter, place, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled,
                 isChecked() ? QIcon::On : QIcon::Off);
}
