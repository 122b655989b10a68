// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWDrawnMeasurements.h"

#include "Model/Measuring/BWMeasurementPainter.h"
#include "Model/Measuring/BWScaleBar.h"

#include <algorithm>
#include <cmath>
#include <QFontInfo>
#include <QPainter>

namespace {

constexpr double longestScaleBar = 200; // points

/// Tiles of the image in which something is drawn.
QRegion drawnRegion(const QImage &image)
{
    constexpr int tile = 32;
    QRegion region;
    for (int top = 0; top < image.height(); top += tile) {
        for (int left = 0; left < image.width(); left += tile) {
            const QRect rect = QRect(left, top, tile, tile) & image.rect();
            bool any = false;
            for (int y = rect.top(); y <= rect.bottom() && !any; ++y) {
                const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
                any = std::any_of(line + rect.left(), line + rect.right() + 1, [](QRgb pixel) { return pixel != 0; });
            }
            if (any)
                region += rect;
        }
    }
    return region;
}

} // namespace

QFont BWDrawnMeasurements::labelFont(const QFont &base)
{
    QFont font = base;
    font.setPixelSize(QFontInfo(base).pixelSize() + 1);
    font.setWeight(QFont::DemiBold);
    return font;
}

void BWDrawnMeasurements::set(const QList<BWMeasurement> &measurements, const Look &look)
{
    const bool sameLook = !m_image.isNull() && look == m_look;
    if (sameLook && measurements == m_measurements)
        return;
    const bool goesOn = sameLook && m_measurements.size() < measurements.size()
        && std::equal(m_measurements.begin(), m_measurements.end(), measurements.begin());
    const qsizetype known = goesOn ? m_measurements.size() : 0;
    updateLabels(measurements, look);
    m_measurements = measurements;
    m_look = look;
    if (!goesOn) {
        m_image = QImage((QSizeF(look.size) * look.ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
        m_image.fill(Qt::transparent);
    }
    QPainter painter(&m_image);
    painter.scale(look.ratio, look.ratio);
    painter.translate(look.beyond);
    if (!goesOn)
        drawScaleBar(painter);
    BWMeasurementPainter draw(painter, look.toWidget, 1, look.font, look.locale);
    draw.setVisible(QRectF({}, look.size));
    draw.setTexts(m_texts);
    for (qsizetype i = known; i < measurements.size(); ++i)
        draw.draw(measurements[i], m_labels[i], look.haveHandles);
    painter.end();
    m_covered = drawnRegion(m_image);
}

/// Results are worked out once, as long as neither the measurement nor the scale becomes another one.
void BWDrawnMeasurements::updateLabels(const QList<BWMeasurement> &measurements, const Look &look)
{
    const bool sameScale = look.scale == m_look.scale && look.locale == m_look.locale;
    QStringList labels;
    labels.reserve(measurements.size());
    for (qsizetype i = 0; i < measurements.size(); ++i) {
        const bool isKnown = sameScale && i < m_labels.size() && m_measurements[i] == measurements[i];
        labels.append(isKnown ? m_labels[i] : BWMeasurementPainter::label(measurements[i], look.scale, look.locale));
    }
    m_labels = labels;
}

void BWDrawnMeasurements::drawScaleBar(QPainter &painter) const
{
    const BWPictureScale &scale = m_look.scale;
    if (m_look.scaleBarIn.isEmpty() || scale.pixels.isEmpty())
        return;
    const QPointF width = m_look.toWidget.map(QPointF(1, 0)) - m_look.toWidget.map(QPointF());
    const double points = std::hypot(width.x(), width.y());
    const double shown = scale.isCalibrated() ? scale.millimetresPerWidth() : scale.pixels.width();
    const double height = double(scale.pixels.height()) / scale.pixels.width();
    const QRectF area = m_look.toWidget.mapRect(QRectF(0, 0, 1, height)) & QRectF(m_look.scaleBarIn);
    const BWScaleBar bar(shown / points, std::min(longestScaleBar, area.width() / 2),
                         scale.isCalibrated() ? scale.unit : BWLengthUnit::Pixel, scale.isUnitChosen);
    BWMeasurementPainter(painter, m_look.toWidget, 1, m_look.font, m_look.locale).drawScaleBar(bar, area);
}

void BWDrawnMeasurements::paint(QPainter &painter, const QRegion &region) const
{
    const double ratio = m_look.ratio;
    painter.save();
    painter.scale(1 / ratio, 1 / ratio); // pixel for pixel
    for (const QRect &rect : m_covered) {
        if (region.intersects(QRectF(QPointF(rect.topLeft()) / ratio, QSizeF(rect.size()) / ratio).toAlignedRect()))
            painter.drawImage(rect.topLeft(), m_image, rect);
    }
    painter.restore();
}

void BWDrawnMeasurements::clear()
{
    m_measurements.clear();
    m_labels.clear();
    m_texts.clear();
    m_look = {};
    m_image = {};
    m_covered = {};
}
