// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWPillPainting.h"

#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"

#include <algorithm>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QStyle>
#include <QWidget>

namespace {

constexpr int pillSidePadding = 17;
constexpr int pillEndPadding = 6;
constexpr int signGap = 9;
constexpr int detailsGap = 16;
constexpr double enlarged = 1.1; // read at a glance, from the corner of the eye
constexpr QColor recordColor(255, 82, 82);

QPixmap emptyPixmap(const QSize &size, double ratio)
{
    QPixmap pixmap((QSizeF(size) * ratio).toSize());
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

} // namespace

void drawBWPill(QPainter &painter, const QRectF &rect)
{
    const double radius = std::min(rect.height() / 2, 14.0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (BWColors::isHighContrast(QGuiApplication::palette())) {
        const BWCrispFrame frame(painter, rect);
        painter.setPen(QPen(Qt::white, frame.width));
        painter.setBrush(Qt::black);
        painter.drawRoundedRect(frame.rect, radius, radius);
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(bwPillColor);
        painter.drawRoundedRect(rect, radius, radius);
    }
    painter.restore();
}

void paintBWPill(QWidget &widget, QPixmap &drawing, const std::function<void(QPainter &)> &drawTexts, double opacity)
{
    const double ratio = widget.devicePixelRatioF();
    if (drawing.isNull() || drawing.devicePixelRatio() != ratio) {
        drawing = emptyPixmap(widget.size(), ratio);
        QPainter painter(&drawing);
        drawBWPill(painter, widget.rect());
        painter.setFont(widget.font());
        drawTexts(painter);
    }
    QPainter painter(&widget);
    painter.setOpacity(opacity);
    drawBWPixmap(painter, {}, drawing);
}

void BWFlashPicture::setCaption(Sign sign, const QString &caption)
{
    m_sign = sign;
    m_caption = caption;
    m_details.clear();
    m_detailsWidth = 0;
    measure();
}

void BWFlashPicture::setDetails(const QString &details)
{
    m_details = details;
    m_detailsWidth = std::max(m_detailsWidth, QFontMetrics(m_detailsFont).horizontalAdvance(details));
    measure();
}

void BWFlashPicture::setFont(const QFont &font)
{
    m_detailsFont = font;
    m_detailsFont.setPointSizeF(font.pointSizeF() * enlarged);
    m_captionFont = m_detailsFont;
    m_captionFont.setWeight(QFont::Bold);
    m_detailsWidth = 0;
    setDetails(m_details);
}

int BWFlashPicture::signWidth() const
{
    return QFontMetrics(m_captionFont).ascent() * 3 / 4;
}

void BWFlashPicture::measure()
{
    const QFontMetrics caption(m_captionFont);
    m_captionEnd = pillSidePadding + signWidth() + signGap + caption.horizontalAdvance(m_caption);
    const int details = m_details.isEmpty() ? 0 : detailsGap + m_detailsWidth;
    const int height = std::max(caption.height(), QFontMetrics(m_detailsFont).height());
    m_size = {m_captionEnd + details + pillSidePadding, height + 2 * pillEndPadding};
}

/// Sign, caption and details follow each other in the direction of reading.
QRect BWFlashPicture::placed(int left, int width) const
{
    return QStyle::visualRect(QGuiApplication::layoutDirection(), QRect(QPoint(), m_size),
                              QRect(left, 0, width, m_size.height()));
}

QRect BWFlashPicture::fadingRect() const
{
    return placed(0, m_sign == Sign::Record ? m_captionEnd + 1 : m_size.width());
}

QPixmap BWFlashPicture::steadyPart(double ratio) const
{
    QPixmap pixmap = emptyPixmap(m_size, ratio);
    if (m_sign != Sign::Record)
        return pixmap;
    QPainter painter(&pixmap);
    drawBWPill(painter, QRect(QPoint(), m_size));
    painter.setFont(m_detailsFont);
    painter.setPen(bwPillTextColor);
    painter.drawText(placed(m_captionEnd + detailsGap, m_detailsWidth), Qt::AlignVCenter, m_details);
    return pixmap;
}

QPixmap BWFlashPicture::fadingPart(double ratio) const
{
    QPixmap pixmap = emptyPixmap(m_size, ratio);
    QPainter painter(&pixmap);
    if (m_sign != Sign::Record)
        drawBWPill(painter, QRect(QPoint(), m_size));
    drawSign(painter);
    painter.setFont(m_captionFont);
    painter.setPen(bwPillTextColor);
    const int left = pillSidePadding + signWidth() + signGap;
    painter.drawText(placed(left, m_captionEnd - left), Qt::AlignVCenter, m_caption);
    return pixmap;
}

void BWFlashPicture::drawSign(QPainter &painter) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double side = signWidth();
    const QRectF box(placed(pillSidePadding, signWidth()).left(), (m_size.height() - side) / 2, side, side);
    if (m_sign == Sign::Record) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(recordColor);
        painter.drawEllipse(box);
    } else if (m_sign == Sign::Pause) {
        const double bar = side / 3;
        painter.fillRect(QRectF(box.left(), box.top(), bar, side), bwPillTextColor);
        painter.fillRect(QRectF(box.right() - bar, box.top(), bar, side), bwPillTextColor);
    } else {
        painter.setPen(QPen(bwPillTextColor, std::max(1.5, side / 6), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const auto at = [&box](double x, double y) {
            return box.topLeft() + QPointF(x * box.width(), y * box.height());
        };
        painter.drawPolyline(QPolygonF{at(0.08, 0.55), at(0.36, 0.84), at(0.94, 0.18)});
    }
    painter.restore();
}
