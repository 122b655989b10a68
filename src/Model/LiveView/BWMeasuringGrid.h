// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QList>
#include <QRect>
#include <QSizeF>
#include <QString>
#include <QStringList>

struct BWRenderRequest;

/// The lines of the measuring grid on the live image, with a square around the image's middle.
///
/// Lengths are in points, in the image as it is before it is turned or mirrored, with y growing upwards. The distance
/// of the lines is not zoomed.
class BWMeasuringGrid {
public:
    static constexpr double lineWidth = 0.25;

    BWMeasuringGrid() = default;
    /// `frame` is the size of the zoomed image. There are no lines if their `distance` is less than their width.
    BWMeasuringGrid(QSizeF frame, double distance);

    /// Left edges of the upright lines. One may lie on the right edge of the image.
    const QList<double> &vertical() const { return m_vertical; }
    /// Lower edges of the level lines, all of them within the image.
    const QList<double> &horizontal() const { return m_horizontal; }

    /// What the lines cover of the viewport, in device pixels: whole pixels and at least a point, turned and mirrored like
    /// the image, and nothing outside of the part of it that is to be seen. A line on the edge of the image takes the
    /// image's last pixels.
    QList<QRect> pixels(const BWRenderRequest &request) const;

private:
    QSizeF m_frame;
    QList<double> m_vertical;
    QList<double> m_horizontal;
};

/// How far apart the lines of the measuring grid are, for each calibrated product and resolution. Changes last as long
/// as the object. One thread at a time.
class BWMeasuringGridTable {
public:
    /// Holds the built-in calibration.
    BWMeasuringGridTable();

    /// Whether there is a grid for the product.
    bool contains(const QString &productIdentifier) const { return m_products.contains(productIdentifier); }
    QStringList products() const { return m_products.keys(); }
    /// Those that are calibrated, the narrowest first.
    QStringList resolutions(const QString &productIdentifier) const;
    /// Points from line to line; 0 where there is no calibration. `resolution` is written as "640x480".
    double distance(const QString &productIdentifier, const QString &resolution) const;

    /// Also adds a resolution. Does nothing for a product without calibration.
    void setDistance(double distance, const QString &productIdentifier, const QString &resolution);

private:
    using Distances = QHash<QString, double>; // by resolution

    QHash<QString, Distances> m_products;
};
