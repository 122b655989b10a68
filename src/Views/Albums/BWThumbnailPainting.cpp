#include "Views/Albums/BWThumbnailPainting.h"

#include "Views/Albums/BWThumbnailCellGeometry.h"
#include "Views/Utils/BWPillPainting.h"

#include <algorithm>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

using namespace Qt::StringLiterals;

namespace {

constexpr double frameRadius = 5;
constexpr double placeholderStrength = 0.08; // of the text colour in the ground
constexpr double glyphStrength = 0.42;
constexpr double glyphWidth = 34;
constexpr float selectionOpacity = 0.35F;
constexpr double selectionWidth = 2;
constexpr float focusOpacity = 0.8F;
constexpr double focusWidth = 1.5;
constexpr double focusDistance = 5.5;
constexpr double movieFont = 0.85;
constexpr double movieInset = 4;

/// Some of the text's colour in the ground: the same calm grey in light and dark palettes.
QColor grey(const QPalette &palette, double strength)
{
    const QColor ground = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::Text);
    const auto mix = [strength](int from, int to) { return qRound(from + (to - from) * strength); };
    return {mix(ground.red(), text.red()), mix(ground.green(), text.green()), mix(ground.blue(), text.blue())};
}

QRectF grown(const QRectF &rect, double by)
{
    return rect.adjusted(-by, -by, by, by);
}

} // namespace

void BWThumbnailPainting::drawPlaceholder(QPainter &painter, const QRectF &picture, const QPalette &palette)
{
    painter.fillRect(picture, grey(palette, placeholderStrength));
}

void BWThumbnailPainting::drawNoPicture(QPainter &painter, const QRectF &picture, const QPalette &palette)
{
    const double width = std::min(glyphWidth, picture.width() / 2);
    QRectF frame(0, 0, width, width * 0.78);
    frame.moveCenter(picture.center());
    const auto at = [&frame](double x, double y) {
        return frame.topLeft() + QPointF(x * frame.width(), y * frame.height());
    };
    const QColor colour = grey(palette, glyphStrength);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    // a picture, torn in two
    painter.drawPolyline(QPolygonF{at(0.46, 0), at(0.1, 0), at(0, 0.1), at(0, 0.9), at(0.1, 1), at(0.34, 1),
                                   at(0.5, 0.72), at(0.36, 0.5), at(0.54, 0.26), at(0.46, 0)});
    painter.drawPolyline(QPolygonF{at(0.66, 0), at(0.9, 0), at(1, 0.1), at(1, 0.9), at(0.9, 1), at(0.54, 1),
                                   at(0.7, 0.72), at(0.56, 0.5), at(0.74, 0.26), at(0.66, 0)});
}

void BWThumbnailPainting::drawSelection(QPainter &painter, const QRectF &picture, const QPalette &palette)
{
    const QColor colour = palette.color(QPalette::Highlight);
    QColor veil = colour;
    veil.setAlphaF(selectionOpacity);
    painter.setPen(QPen(colour, selectionWidth));
    painter.setBrush(veil);
    painter.drawRoundedRect(grown(picture, BWThumbnailCellGeometry::frameDistance - selectionWidth / 2), frameRadius,
                            frameRadius);
}

void BWThumbnailPainting::drawFocus(QPainter &painter, const QRectF &picture, const QPalette &palette)
{
    QColor colour = palette.color(QPalette::Text);
    colour.setAlphaF(focusOpacity);
    painter.setPen(QPen(colour, focusWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(grown(picture, focusDistance), frameRadius + 2, frameRadius + 2);
}

void BWThumbnailPainting::drawMovieMark(QPainter &painter, const QRectF &picture,
                                        const std::optional<std::chrono::milliseconds> &length, const QFont &font)
{
    QFont small = font;
    if (font.pointSizeF() > 0)
        small.setPointSizeF(font.pointSizeF() * movieFont);
    const QFontMetricsF metrics(small);
    const QString text = length ? lengthText(*length) : QString();
    const double height = metrics.height() + 2;
    const double side = metrics.ascent() * 0.62; // of the triangle
    const double textWidth = text.isEmpty() ? 0 : metrics.horizontalAdvance(text) + height / 4;
    const double padding = height * 0.45;

    QRectF pill(0, 0, 2 * padding + side + textWidth, height);
    pill.moveBottomRight(picture.bottomRight() - QPointF(movieInset, movieInset));
    pill.moveLeft(std::max(pill.left(), picture.center().x() - pill.width() / 2)); // of a narrow picture: its middle
    drawBWPill(painter, pill);

    const QPointF corner(pill.left() + padding, pill.center().y() - side / 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(bwPillTextColor);
    painter.drawPolygon(QPolygonF{corner, corner + QPointF(0, side), corner + QPointF(side * 0.87, side / 2)});
    painter.setFont(small);
    painter.setPen(bwPillTextColor);
    painter.drawText(pill.adjusted(padding + side + height / 4, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, text);
}

QString BWThumbnailPainting::lengthText(std::chrono::milliseconds length)
{
    const qint64 seconds = std::max<qint64>(1, (length.count() + 500) / 1000);
    const auto twoDigits = [](qint64 number) { return u"%1"_s.arg(number, 2, 10, QLatin1Char('0')); };
    if (seconds < 3600)
        return u"%1:%2"_s.arg(QString::number(seconds / 60), twoDigits(seconds % 60));
    return u"%1:%2:%3"_s.arg(QString::number(seconds / 3600), twoDigits(seconds / 60 % 60), twoDigits(seconds % 60));
}
