// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWBarButton.h"

#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"

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
    const BWCrispFrame ring(painter, rect, ringWidth);
    const QColor accent = BWColors::accent(palette);
    if (state.checked) {
        const BWCrispFrame frame(painter, ring.rect);
        QColor fill = accent;
        fill.setAlphaF(checkedOpacity);
        painter.setPen(QPen(accent, frame.width));
        painter.setBrush(fill);
        painter.drawRoundedRect(frame.rect, cornerRadius, cornerRadius);
    }
    if (state.enabled && (state.hovered || state.pressed)) {
        const double strength = BWColors::isHighContrast(palette) ? 2 : 1;
        QColor veil = palette.color(QPalette::WindowText);
        veil.setAlphaF(static_cast<float>(strength * (state.pressed ? pressedOpacity : hoverOpacity)));
        painter.setPen(Qt::NoPen);
        painter.setBrush(veil);
        painter.drawRoundedRect(ring.rect, cornerRadius, cornerRadius);
    }
    if (state.focused) {
        painter.setPen(QPen(accent, ring.width));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(ring.rect, cornerRadius, cornerRadius);
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
