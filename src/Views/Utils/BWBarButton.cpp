#include "Views/Utils/BWBarButton.h"

#include "Views/Utils/BWControlPainting.h"

#include <QPainter>

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
