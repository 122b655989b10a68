// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWMeasurementPainter.h"

#include "Model/Measuring/BWScaleBar.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

namespace {

const QColor lineColor(255, 221, 64);
const QColor edgeColor(0, 0, 0, 200);

/// The circle through three points, in any units; an empty rectangle if there is none.
QRectF circleThrough(QPointF a, QPointF b, QPointF c)
{
    const QPointF ab = b - a;
    const QPointF ac = c - a;
    const double twice = 2 * (ab.x() * ac.y() - ab.y() * ac.x());
    if (twice == 0)
        return {};
    const double b2 = QPointF::dotProduct(ab, ab);
    const double c2 = QPointF::dotProduct(ac, ac);
    const QPointF middle((ac.y() * b2 - ab.y() * c2) / twice, (ab.x() * c2 - ac.x() * b2) / twice);
    const double radius = std::hypot(middle.x(), middle.y());
    return {a + middle - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius)};
}

QRectF circleAround(QPointF middle, QPointF rim)
{
    const double radius = std::hypot(rim.x() - middle.x(), rim.y() - middle.y());
    return {middle - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius)};
}

void drawText(QPainter &painter, QPointF place, const QFont &font, const QString &text, double lineWidth)
{
    QPainterPath path;
    path.addText(place, font, text);
    painter.strokePath(path, QPen(edgeColor, 3 * lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(path, Qt::white);
}

void addArrowHead(QPainterPath &path, QPointF from, QPointF to, double size)
{
    const double angle = std::atan2(to.y() - from.y(), to.x() - from.x());
    for (const double side : {0.42, -0.42}) {
        path.moveTo(to);
        path.lineTo(to - size * QPointF(std::cos(angle + side), std::sin(angle + side)));
    }
}

} // namespace

const BWDrawnTexts::Text &BWDrawnTexts::drawn(const QString &text, const QFont &font, double lineWidth, double ratio)
{
    if (font != m_font || lineWidth != m_lineWidth || ratio != m_ratio)
        m_texts.clear();
    m_font = font;
    m_lineWidth = lineWidth;
    m_ratio = ratio;
    if (const Text *known = m_texts.object(text))
        return *known;
    const double edge = 2 * lineWidth;
    const QRectF bounds = QFontMetricsF(font).boundingRect(text).adjusted(-edge, -edge, edge, edge);
    auto made = std::make_unique<Text>();
    made->image = QImage((bounds.size() * ratio).toSize() + QSize(1, 1), QImage::Format_ARGB32_Premultiplied);
    made->image.setDevicePixelRatio(ratio);
    made->image.fill(Qt::transparent);
    made->begin = QPointF((-bounds.topLeft() * ratio).toPoint()) / ratio;
    QPainter painter(&made->image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawText(painter, made->begin, font, text, lineWidth);
    painter.end();
    // A cache deletes at once what is larger than itself.
    constexpr qsizetype kilobyte = 1024;
    const qsizetype size = std::min(m_texts.maxCost(), 1 + made->image.sizeInBytes() / kilobyte);
    const Text &inserted = *made;
    m_texts.insert(text, made.release(), size);
    return inserted;
}

BWMeasurementPainter::BWMeasurementPainter(QPainter &painter, const QTransform &pictureToTarget, double lineWidth,
                                           const QFont &font, const QLocale &locale)
    : m_painter(painter), m_toTarget(pictureToTarget), m_lineWidth(lineWidth), m_font(font), m_locale(locale)
{
}

QString BWMeasurementPainter::label(const BWMeasurement &measurement, const BWPictureScale &scale,
                                    const QLocale &locale)
{
    const auto results = measurement.results(scale);
    return results.isEmpty() ? measurement.text : BWLengths::text(results.first().quantity, locale);
}

void BWMeasurementPainter::stroke(const QPainterPath &path) const
{
    const double edge = 2 * m_lineWidth;
    if (!isVisible(path.controlPointRect().adjusted(-edge, -edge, edge, edge)))
        return;
    m_painter.setBrush(Qt::NoBrush);
    for (const auto &[color, width] : {std::pair(edgeColor, 3.0), std::pair(lineColor, 1.5)}) {
        m_painter.setPen(QPen(color, width * m_lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        m_painter.drawPath(path);
    }
}

void BWMeasurementPainter::draw(const BWMeasurement &measurement, const QString &label, bool isActive) const
{
    BWPoints points;
    for (const QPointF &point : measurement.points)
        points.append(m_toTarget.map(point));
    if (points.isEmpty())
        return;
    m_painter.save();
    m_painter.setRenderHint(QPainter::Antialiasing);
    const double mark = 4 * m_lineWidth;
    const auto addCross = [mark](QPainterPath &path, QPointF at) {
        path.moveTo(at - QPointF(mark, 0));
        path.lineTo(at + QPointF(mark, 0));
        path.moveTo(at - QPointF(0, mark));
        path.lineTo(at + QPointF(0, mark));
    };
    QPainterPath path;
    const bool isCount = measurement.kind == QLatin1String("count");
    if (isCount) {
        for (const QPointF &point : points) { // a path of hundreds takes far longer than hundreds of paths
            QPainterPath ring;
            ring.addEllipse(point, mark, mark);
            if (isActive)
                addCross(ring, point);
            stroke(ring);
        }
    } else if (measurement.kind == QLatin1String("circle") && points.size() == 3) {
        path.addEllipse(circleThrough(points[0], points[1], points[2]));
    } else if (measurement.kind == QLatin1String("radius") && points.size() == 2) {
        path.addEllipse(circleAround(points[0], points[1]));
        path.moveTo(points[0]);
        path.lineTo(points[1]);
    } else {
        path.addPolygon(QPolygonF(points));
        if (measurement.kind == QLatin1String("polygon") && points.size() > 2)
            path.closeSubpath();
        if (measurement.kind == QLatin1String("arrow") && points.size() == 2)
            addArrowHead(path, points[1], points[0], 3 * mark);
    }
    // Ends and corners as crosses: their middle is what was meant.
    if ((isActive && !isCount) || measurement.kind == QLatin1String("length")) {
        for (const QPointF &point : points)
            addCross(path, point);
    }
    stroke(path);
    const QPointF middle =
        std::accumulate(points.begin(), points.end(), QPointF()) / static_cast<double>(points.size());
    drawLabel(label, points.last(), points.last() - middle);
    m_painter.restore();
}

void BWMeasurementPainter::drawCursor(QPointF place) const
{
    const QPointF at = m_toTarget.map(place);
    QPainterPath path;
    for (const QPointF way : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)}) {
        path.moveTo(at + 3 * m_lineWidth * way); // the very place stays free
        path.lineTo(at + 10 * m_lineWidth * way);
    }
    m_painter.save();
    m_painter.setRenderHint(QPainter::Antialiasing);
    stroke(path);
    m_painter.restore();
}

void BWMeasurementPainter::drawLabel(const QString &text, QPointF beside, QPointF outwards) const
{
    if (text.isEmpty())
        return;
    const QFontMetricsF metrics(m_font);
    const QRectF bounds = metrics.boundingRect(text);
    const double gap = 8 * m_lineWidth;
    const QPointF begin(outwards.x() < 0 ? -gap - bounds.width() : gap,
                        outwards.y() > 0 ? gap + metrics.capHeight() : -gap);
    QPointF place = beside + begin - QPointF(bounds.left(), 0);
    if (!m_textArea.isEmpty()) {
        const double edge = 3 * m_lineWidth;
        const QRectF area = m_textArea.adjusted(edge, edge, -edge, -edge);
        const QRectF lies = bounds.translated(place);
        place.rx() += std::max(0.0, area.left() - lies.left()) - std::max(0.0, lies.right() - area.right());
        place.ry() += std::max(0.0, area.top() - lies.top()) - std::max(0.0, lies.bottom() - area.bottom());
    }
    const double edge = 2 * m_lineWidth;
    if (!isVisible(bounds.translated(place).adjusted(-edge, -edge, edge, edge)))
        return;
    constexpr int longestKept = 100; // characters; a remark can be of any length
    if (!m_texts || text.size() > longestKept) {
        drawText(m_painter, place, m_font, text, m_lineWidth);
        return;
    }
    const double ratio = m_painter.device()->devicePixelRatioF();
    const BWDrawnTexts::Text &drawn = m_texts->drawn(text, m_font, m_lineWidth, ratio);
    m_painter.drawImage(QPointF(((place - drawn.begin) * ratio).toPoint()) / ratio, drawn.image);
}

void BWMeasurementPainter::drawScaleBar(const BWScaleBar &bar, const QRectF &area) const
{
    if (bar.length <= 0)
        return;
    const QFontMetricsF metrics(m_font);
    const QString text = bar.text(m_locale);
    const double margin = 16 * m_lineWidth;
    const QPointF right = area.bottomRight() - QPointF(margin, margin);
    const QPointF left = right - QPointF(bar.length, 0);
    const double tick = 5 * m_lineWidth;
    QPainterPath path;
    path.moveTo(left - QPointF(0, tick));
    path.lineTo(left);
    path.lineTo(right);
    path.lineTo(right - QPointF(0, tick));
    m_painter.save();
    m_painter.setRenderHint(QPainter::Antialiasing);
    stroke(path);
    const double width = metrics.horizontalAdvance(text);
    drawLabel(text, (left + right) / 2 - QPointF(width / 2 + 8 * m_lineWidth, 0));
    m_painter.restore();
}
