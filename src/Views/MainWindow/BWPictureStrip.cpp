// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWPictureStrip.h"

#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"

#include <algorithm>
#include <QPainter>

namespace {
constexpr int stripDistance = 11; // from the edges of the picture
constexpr double stripFrameShare = 0.25; // of the text colour
} // namespace

QSize BWStripButton::sizeHint() const
{
    constexpr QSize padding(20, 12);
    const int height = fontMetrics().height() + padding.height();
    return {m_shows == Shows::Cross ? height : fontMetrics().size(0, text()).width() + padding.width(), height};
}

void BWStripButton::paintEvent(QPaintEvent *event)
{
    BWBarButton::paintEvent(event); // without an icon: the state
    QPainter painter(this);
    const QColor color =
        isEnabled() ? palette().color(QPalette::Active, QPalette::WindowText) : BWColors::disabled(palette());
    painter.setPen(color);
    if (m_shows == Shows::Text) {
        painter.drawText(rect(), Qt::AlignCenter, text());
        return;
    }
    constexpr double arm = 4;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap));
    painter.translate(QRectF(rect()).center());
    painter.drawLine(QPointF(-arm, -arm), QPointF(arm, arm));
    painter.drawLine(QPointF(-arm, arm), QPointF(arm, -arm));
}

BWPictureStrip::BWPictureStrip(QWidget *parent) : QWidget(parent)
{
    hide();
}

void BWPictureStrip::placeIn(const QRect &area)
{
    const QSize size(std::min(sizeHint().width(), area.width() - 2 * stripDistance), sizeHint().height());
    setGeometry(QRect(
        QPoint(area.x() + (area.width() - size.width()) / 2, area.y() + area.height() - stripDistance - size.height()),
        size));
}

int BWPictureStrip::neededWidth() const
{
    return isHidden() ? 0 : sizeHint().width() + 2 * stripDistance;
}

int BWPictureStrip::takenHeight() const
{
    return isHidden() ? 0 : sizeHint().height() + stripDistance;
}

void BWPictureStrip::paintEvent(QPaintEvent *)
{
    constexpr double radius = 8;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const BWCrispFrame frame(painter, rect());
    painter.setPen(QPen(BWColors::line(palette(), stripFrameShare), frame.width));
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(frame.rect, radius, radius);
}
