// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWCalibration.h"
#include "Model/Measuring/BWLength.h"

#include <functional>
#include <QList>
#include <QPointF>
#include <QSize>
#include <QString>

using BWPoints = QList<QPointF>;

/// Something that a kind of measurement tells, such as a circle's area.
struct BWMeasuredQuantity {
    QString identifier; ///< "length", "area"
    BWDimension dimension;
    /// Of points in any square unit; not a number where they define none, as three points in line do for a circle.
    std::function<double(const BWPoints &)> measure;
};

/// A kind of measurement: how many points it takes, and what it tells. All kinds stand in one table.
struct BWMeasurementKind {
    static constexpr int anyNumber = 1'000'000;

    QString identifier; ///< "length", "path", "angle", ... as files have it
    int fewestPoints;
    int mostPoints; ///< it is complete with these; `anyNumber` if the user says when
    QList<BWMeasuredQuantity> quantities; ///< none: a remark
    bool hasText = false;

    static const QList<BWMeasurementKind> &all();
    /// Null for an unknown one.
    static const BWMeasurementKind *find(const QString &identifier);
};

/// How large a picture is and how long what it shows.
struct BWPictureScale {
    QSize pixels; ///< of the picture in its full resolution
    BWCalibration calibration; ///< null: lengths are in pixels
    BWLengthUnit unit = BWLengthUnit::Millimetre; ///< in which to tell lengths, if calibrated
    bool isUnitChosen = false; ///< by somebody; else a scale bar takes the one that suits it

    bool isCalibrated() const { return !calibration.isNull(); }
    double millimetresPerWidth() const;

    bool operator==(const BWPictureScale &) const = default;
};

/// A measurement in a picture. Its points are in widths of the picture, from its upper left corner as the camera delivers it,
/// so they hold in every zoom, turn and resolution with the same field of view.
struct BWMeasurement {
    QString kind;
    BWPoints points;
    QString text{}; ///< of a remark

    bool operator==(const BWMeasurement &) const = default;

    /// Whether it has as many points as its kind needs.
    bool isComplete() const;

    struct Result {
        QString identifier;
        BWQuantity quantity;
    };
    /// What it tells, in its kind's order; nothing while it is not complete. The error is that of points placed to half a
    /// pixel, and of the scale.
    QList<Result> results(const BWPictureScale &scale) const;
};
