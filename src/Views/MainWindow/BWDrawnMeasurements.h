// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurementPainter.h"

#include <QFont>
#include <QImage>
#include <QLocale>
#include <QRect>
#include <QRegion>
#include <QStringList>
#include <QTransform>

class QPainter;

/// Measurements and the scale bar as they lie over the picture. They are drawn once, because the moving picture below has
/// them painted many times a second; what is added to many is drawn alone. GUI thread.
class BWDrawnMeasurements {
public:
    /// All that they depend on. Lengths are in points of the widget over the picture.
    struct Look {
        QTransform toWidget; ///< from widths of the picture
        QSize size; ///< of the widget
        double ratio = 1; ///< of device pixels to points
        QPointF beyond; ///< from the whole device pixel on which the image is drawn to where the widget begins
        BWPictureScale scale;
        bool haveHandles = false;
        QRect scaleBarIn; ///< the part of the widget where there is room for it; empty for none
        QFont font;
        QLocale locale;

        bool operator==(const Look &) const = default;
    };

    /// That of labels over the picture, for a widget with that font.
    static QFont labelFont(const QFont &base);

    void set(const QList<BWMeasurement> &measurements, const Look &look);
    /// Whether that one was drawn as it is, at that place in the list.
    bool shows(qsizetype index, const BWMeasurement &measurement) const
    {
        return index < m_measurements.size() && m_measurements[index] == measurement;
    }
    /// What lies in that region of the widget.
    void paint(QPainter &painter, const QRegion &region) const;
    void clear();

private:
    void drawScaleBar(QPainter &painter) const;
    void updateLabels(const QList<BWMeasurement> &measurements, const Look &look);

    QList<BWMeasurement> m_measurements;
    QStringList m_labels; ///< of each of them
    BWDrawnTexts m_texts;
    Look m_look;
    QImage m_image; ///< null: nothing has been drawn
    QRegion m_covered; ///< by what is drawn in it, in its pixels
};
