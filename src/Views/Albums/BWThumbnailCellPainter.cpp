// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailCellPainter.h"

#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWPillPainting.h"

#include <algorithm>
#include <cmath>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

using namespace Qt::StringLiterals;

namespace {

constexpr int cellMargin = 7;
constexpr double markSize = 5;
constexpr QSize unknownShape(4000, 3000);
constexpr qsizetype keptKilobytes = 24 << 10;
constexpr double frameRadius = 5;
constexpr double placeholderStrength = 0.08; // of the text colour in the background
constexpr double glyphStrength = 0.42;
constexpr double glyphWidth = 34;
constexpr float selectionOpacity = 0.35F;
constexpr double selectionWidth = 2;
constexpr float focusOpacity = 0.8F;
constexpr double focusWidth = 1.5;
constexpr double focusDistance = 5.5;
constexpr double movieFont = 0.85;
constexpr double movieInset = 4;

/// A little text colour in the background colour: the same calm grey in light and dark palettes.
QColor grey(const QPalette &palette, double strength)
{
    return BWColors::mixed(palette.color(QPalette::Base), palette.color(QPalette::Text), strength);
}

QRectF grown(const QRectF &rect, double by)
{
    return rect.adjusted(-by, -by, by, by);
}

/// The size that gives a cell's picture, or its placeholder, its shape.
QSize shapeOf(const BWThumbnailValue &value)
{
    if (value.state == BWThumbnailValue::State::NoPicture)
        return {};
    return value.naturalSize.isEmpty() ? value.picture.size() : value.naturalSize;
}

/// The place of a picture.
void drawPlaceholder(QPainter &painter, const QRectF &picture, const QPalette &palette)
{
    painter.fillRect(picture, grey(palette, placeholderStrength));
}

/// The sign of a file without a picture.
void drawNoPicture(QPainter &painter, const QRectF &picture, const QPalette &palette)
{
    const double width = std::min(glyphWidth, picture.width() / 2);
    QRectF frame(0, 0, width, width * 0.78);
    frame.moveCenter(picture.center());
    const auto at = [&frame](double x, double y) {
        return frame.topLeft() + QPointF(x * frame.width(), y * frame.height());
    };
    const QColor colour =
        BWColors::on(grey(palette, placeholderStrength), grey(palette, glyphStrength), BWColors::visible);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    // A picture torn in two.
    painter.drawPolyline(QPolygonF{at(0.46, 0), at(0.1, 0), at(0, 0.1), at(0, 0.9), at(0.1, 1), at(0.34, 1),
                                   at(0.5, 0.72), at(0.36, 0.5), at(0.54, 0.26), at(0.46, 0)});
    painter.drawPolyline(QPolygonF{at(0.66, 0), at(0.9, 0), at(1, 0.1), at(1, 0.9), at(0.9, 1), at(0.54, 1),
                                   at(0.7, 0.72), at(0.56, 0.5), at(0.74, 0.26), at(0.66, 0)});
}

/// A frame; the picture is drawn over it.
void drawSelection(QPainter &painter, const QRectF &picture, const QPalette &palette)
{
    const QColor colour =
        BWColors::on(palette.color(QPalette::Base), palette.color(QPalette::Highlight), BWColors::visible);
    QColor veil = colour;
    veil.setAlphaF(selectionOpacity);
    painter.setPen(QPen(colour, selectionWidth));
    painter.setBrush(veil);
    painter.drawRoundedRect(grown(picture, BWThumbnailCellGeometry::frameDistance - selectionWidth / 2), frameRadius,
                            frameRadius);
}

/// The ring of the keyboard focus, around the frame of the selection.
void drawFocus(QPainter &painter, const QRectF &picture, const QPalette &palette)
{
    QColor colour = palette.color(QPalette::Text);
    colour.setAlphaF(focusOpacity);
    painter.setPen(QPen(colour, focusWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(grown(picture, focusDistance), frameRadius + 2, frameRadius + 2);
}

/// The sign of a movie, with its length if known.
void drawMovieMark(QPainter &painter, const QRectF &picture, const std::optional<std::chrono::milliseconds> &length,
                   const QFont &font)
{
    QFont small = font;
    if (font.pointSizeF() > 0)
        small.setPointSizeF(font.pointSizeF() * movieFont);
    const QFontMetricsF metrics(small);
    const QString text = length ? BWThumbnailCellPainter::lengthText(*length) : QString();
    const double height = metrics.height() + 2;
    const double side = metrics.ascent() * 0.62; // of the triangle
    const double textWidth = text.isEmpty() ? 0 : metrics.horizontalAdvance(text) + height / 4;
    const double padding = height * 0.45;

    QRectF pill(0, 0, 2 * padding + side + textWidth, height);
    pill.moveBottomRight(picture.bottomRight() - QPointF(movieInset, movieInset));
    pill.moveLeft(std::max(pill.left(), picture.center().x() - pill.width() / 2)); // centred on a narrow picture
    drawBWPill(painter, pill);

    const QPointF corner(pill.left() + padding, pill.center().y() - side / 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(bwPillTextColor);
    painter.drawPolygon(QPolygonF{corner, corner + QPointF(0, side), corner + QPointF(side * 0.87, side / 2)});
    painter.setFont(small);
    painter.setPen(bwPillTextColor);
    painter.drawText(pill.adjusted(padding + side + height / 4, 0, 0, 0),
                     Qt::AlignVCenter | Qt::AlignLeft | Qt::AlignAbsolute, text);
}

} // namespace

QRect BWThumbnailCellGeometry::pictureArea(const QRect &cell)
{
    return cell.adjusted(cellMargin, cellMargin, -cellMargin, -cellMargin);
}

QRectF BWThumbnailCellGeometry::pictureRect(const QRect &cell, const QSize &pixels, double scale)
{
    const QRect area = pictureArea(cell);
    const QSizeF shape = pixels.isEmpty() ? unknownShape : pixels;
    const double fit = std::min({area.width() / shape.width(), area.height() / shape.height(), 1 / scale});
    const auto whole = [scale](double length) { return std::max(1.0, std::floor(length * scale + 0.01)) / scale; };
    const QSizeF size(whole(shape.width() * fit), whole(shape.height() * fit));
    const auto onPixel = [scale](double place) { return std::round(place * scale) / scale; };
    return {{onPixel(area.x() + (area.width() - size.width()) / 2),
             onPixel(area.y() + (area.height() - size.height()) / 2)},
            size};
}

QRectF BWThumbnailCellGeometry::markRect(const QRect &cell)
{
    return {cell.x() + cell.width() / 16.0, cell.y() + cell.height() * 7 / 8.0, markSize, markSize};
}

BWThumbnailPixmaps::BWThumbnailPixmaps() : m_pixmaps(keptKilobytes) { }

QPixmap BWThumbnailPixmaps::scaled(const QImage &image, const QSize &pixels)
{
    const Key key{image.cacheKey(), pixels};
    if (const QPixmap *known = m_pixmaps.object(key))
        return *known;
    const QImage fitting =
        image.size() == pixels ? image : image.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QPixmap pixmap = QPixmap::fromImage(fitting);
    m_pixmaps.insert(key, new QPixmap(pixmap), 1 + qsizetype(pixels.width()) * pixels.height() * 4 / 1024);
    return pixmap;
}

BWThumbnailCellPainter::BWThumbnailCellPainter(const BWThumbnailTableView &view)
    : m_view(view), m_mark(BWIcons::image(u"green_tab_002.png"_s))
{
}

void BWThumbnailCellPainter::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    if (!m_view.hasElement(index))
        return;
    const double scale = painter->device()->devicePixelRatioF();
    const BWThumbnailValue value = m_view.dataSource()->objectValueForTableColumn(m_view, index.column(), index.row());
    // One column may be a point wider than the other, but pictures in both must be equally large.
    QRect cell = option.rect;
    cell.setWidth(m_view.narrowestColumn());
    const QRectF rect = BWThumbnailCellGeometry::pictureRect(cell, shapeOf(value), scale);
    const bool selected = m_view.cellIsSelectedAtRow(index.row(), index.column());

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (selected)
        drawSelection(*painter, rect, option.palette);
    paintPicture(*painter, rect, value, option.palette);
    if (value.isMovie)
        drawMovieMark(*painter, rect, value.length, option.font);
    if (m_view.hasFocus() && index == m_view.currentIndex())
        drawFocus(*painter, rect, option.palette);
    if (selected)
        paintMark(*painter, BWThumbnailCellGeometry::markRect(option.rect), option.palette.color(QPalette::Base));
    painter->restore();
}

void BWThumbnailCellPainter::paintMark(QPainter &painter, const QRectF &rect, const QColor &ground) const
{
    const QPixmap mark = BWIcons::tinted(m_mark, rect.size().toSize(), painter.device()->devicePixelRatioF(),
                                         BWColors::on(ground, BWColors::mark, BWColors::visible));
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(rect, mark, QRectF(mark.rect()));
}

void BWThumbnailCellPainter::paintPicture(QPainter &painter, const QRectF &rect, const BWThumbnailValue &value,
                                          const QPalette &palette) const
{
    if (value.state == BWThumbnailValue::State::Picture && !value.picture.isNull()) {
        const double scale = painter.device()->devicePixelRatioF();
        QPixmap pixmap = m_pixmaps.scaled(value.picture, (rect.size() * scale).toSize());
        pixmap.setDevicePixelRatio(scale);
        drawBWPixmap(painter, rect.topLeft(), pixmap);
        return;
    }
    drawPlaceholder(painter, rect, palette);
    if (value.state == BWThumbnailValue::State::NoPicture)
        drawNoPicture(painter, rect, palette);
}

QString BWThumbnailCellPainter::lengthText(std::chrono::milliseconds length)
{
    const qint64 seconds = std::max<qint64>(1, (length.count() + 500) / 1000);
    const auto twoDigits = [](qint64 number) { return u"%1"_s.arg(number, 2, 10, QLatin1Char('0')); };
    if (seconds < 3600)
        return u"%1:%2"_s.arg(QString::number(seconds / 60), twoDigits(seconds % 60));
    return u"%1:%2:%3"_s.arg(QString::number(seconds / 3600), twoDigits(seconds / 60 % 60), twoDigits(seconds % 60));
}
