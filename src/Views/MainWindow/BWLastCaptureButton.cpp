// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWLastCaptureButton.h"

#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"
#include "Views/Utils/BWPillPainting.h"

#include <QPainter>

namespace {

constexpr QSize place(48, 38);
constexpr int margin = 4; // for the ring of the focus
constexpr double frameShare = 0.35; // of the text colour
constexpr double markHeight = 12;

/// The sign of a movie, in its middle.
void drawMovieSign(QPainter &painter, QPointF middle)
{
    QRectF pill(0, 0, markHeight + 8, markHeight + 4);
    pill.moveCenter(middle);
    drawBWPill(painter, pill);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(bwPillTextColor);
    const double half = markHeight / 3;
    painter.drawPolygon(QPolygonF{middle + QPointF(-half * 0.7, -half), middle + QPointF(-half * 0.7, half),
                                  middle + QPointF(half, 0)});
}

} // namespace

BWLastCaptureButton::BWLastCaptureButton(QWidget *parent) : BWBarButton(parent)
{
    setFixedSize(sizeHint());
}

QSize BWLastCaptureButton::sizeHint() const
{
    return place;
}

void BWLastCaptureButton::setPicture(const QImage &picture, bool isMovie)
{
    m_picture = picture;
    m_isMovie = isMovie;
    update();
}

void BWLastCaptureButton::paintEvent(QPaintEvent *event)
{
    BWBarButton::paintEvent(event); // without an icon: the state
    if (m_picture.isNull())
        return;
    QPainter painter(this);
    const double ratio = devicePixelRatioF();
    const QSize room = (QSizeF(size()) * ratio).toSize() - QSize(2, 2) * (margin * ratio);
    const QSize pixels = m_picture.size().scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1});
    auto picture = QPixmap::fromImage(m_picture.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    picture.setDevicePixelRatio(ratio);
    const QPoint corner(qRound((width() * ratio - pixels.width()) / 2),
                        qRound((height() * ratio - pixels.height()) / 2));
    const QRectF rect(QPointF(corner) / ratio, QSizeF(pixels) / ratio);
    drawBWPixmap(painter, rect.topLeft(), picture);
    const BWCrispFrame frame(painter, rect);
    painter.setPen(QPen(BWColors::line(palette(), frameShare), frame.width));
    painter.drawRect(frame.rect);
    if (m_isMovie)
        drawMovieSign(painter, rect.center());
}
