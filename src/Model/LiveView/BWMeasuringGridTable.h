#pragma once

#include <QHash>
#include <QString>

/// How far apart the lines of the measuring grid are, for each calibrated product and resolution. Changes last as long
/// as the object. One thread at a time.
class BWMeasuringGridTable {
public:
    /// Holds the built-in calibration.
    BWMeasuringGridTable();

    /// Whether there is a grid for the product.
    bool contains(const QString &productIdentifier) const { return m_products.contains(productIdentifier); }
    /// Points from line to line; 0 where nothing is known. `resolution` is written as "640x480".
    double distance(const QString &productIdentifier, const QString &resolution) const;

    /// Also adds a resolution. A product that has no calibration at all gets none.
    void setDistance(double distance, const QString &productIdentifier, const QString &resolution);

private:
    using Distances = QHash<QString, double>; // by resolution

    QHash<QString, Distances> m_products;
};
