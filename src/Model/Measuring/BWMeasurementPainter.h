// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurement.h"

#include <QFont>
#include <QLocale>
#include <QTransform>

class QPainter;
struct BWScaleBar;

/// Draws measurements over a picture, on the screen or into a copy: light lines with a dark edge, which can be told from any
/// ground, and their results beside them.
class BWMeasurementPainter {
public:
    /// `pictureToTarget` leads from widths of the picture to the painter's units, of which a line is `lineWidth` wide: a
    /// point on a screen, more in a large copy. The font's size is in the same units (setPixelSize).
    BWMeasurementPainter(QPainter &painter, const QTransform &pictureToTarget, double lineWidth, const QFont &font,
                         const QLocale &locale);

    /// Texts that would lie partly outside of that area, in the painter's units, are moved into it.
    void keepTextsIn(const QRectF &area) { m_textArea = area; }

    /// `isActive` is the one being placed or moved; its points have handles.
    void draw(const BWMeasurement &measurement, const BWPictureScale &scale, bool isActive = false) const;
    /// A cross where the next point will be.
    void drawCursor(QPointF place) const;
    /// In the lower right corner of `area`, in the painter's units.
    void drawScaleBar(const BWScaleBar &bar, const QRectF &area) const;

    /// What a measurement says beside its lines: its first result, or its text.
    static QString label(const BWMeasurement &measurement, const BWPictureScale &scale, const QLocale &locale);

private:
    void stroke(const class QPainterPath &path) const;
    /// Where no line of a shape is that lies the other way; above a point, if there is none.
    void drawLabel(const QString &text, QPointF beside, QPointF outwards = {}) const;

    QPainter &m_painter;
    QTransform m_toTarget;
    double m_lineWidth;
    QFont m_font;
    QLocale m_locale;
    QRectF m_textArea; // empty: anywhere
};
