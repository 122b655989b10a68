// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurement.h"

#include <optional>
#include <QCache>
#include <QFont>
#include <QImage>
#include <QLocale>
#include <QTransform>

class QPainter;
struct BWScaleBar;

/// Texts as they are drawn, kept for the next time: their outlines take far longer than a copy. One thread at a time.
class BWDrawnTexts {
public:
    struct Text {
        QImage image; ///< with its ratio of device pixels
        QPointF begin; ///< of the text's base line, from the image's upper left corner
    };
    /// The text's own until the next call. All share font, line width and ratio: another one forgets the others.
    const Text &drawn(const QString &text, const QFont &font, double lineWidth, double ratio);

    void clear() { m_texts.clear(); }

private:
    QCache<QString, Text> m_texts{32 << 10}; // kilobytes
    QFont m_font;
    double m_lineWidth = 0;
    double m_ratio = 0;
};

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
    /// What lies outside of that area, in the painter's units, need not be drawn.
    void setVisible(const QRectF &area) { m_visible = area; }
    /// Takes texts from there, on whole device pixels; for a painter that only shifts and scales by the ratio of its
    /// device's pixels.
    void setTexts(BWDrawnTexts &texts) { m_texts = &texts; }

    /// `isActive` is the one being placed or moved; its points have handles.
    void draw(const BWMeasurement &measurement, const BWPictureScale &scale, bool isActive = false) const
    {
        draw(measurement, label(measurement, scale, m_locale), isActive);
    }
    /// The same for whoever knows its label().
    void draw(const BWMeasurement &measurement, const QString &label, bool isActive) const;
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
    bool isVisible(const QRectF &area) const { return !m_visible || m_visible->intersects(area); }

    QPainter &m_painter;
    QTransform m_toTarget;
    double m_lineWidth;
    QFont m_font;
    QLocale m_locale;
    QRectF m_textArea; // empty: anywhere
    std::optional<QRectF> m_visible;
    BWDrawnTexts *m_texts = nullptr;
};
