// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWMeasurement.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

using namespace Qt::StringLiterals;

namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

double distance(QPointF from, QPointF to)
{
    return std::hypot(to.x() - from.x(), to.y() - from.y());
}

double pathLength(const BWPoints &points)
{
    double length = 0;
    for (qsizetype i = 1; i < points.size(); ++i)
        length += distance(points[i - 1], points[i]);
    return length;
}

double perimeter(const BWPoints &points)
{
    return pathLength(points) + distance(points.last(), points.first());
}

double polygonArea(const BWPoints &points)
{
    double twice = 0;
    for (qsizetype i = 0; i < points.size(); ++i) {
        const QPointF from = points[i];
        const QPointF to = points[(i + 1) % points.size()];
        twice += from.x() * to.y() - to.x() * from.y();
    }
    return std::abs(twice) / 2;
}

/// Between the arms from the second point to the others, 0 to 180 degrees.
double angle(const BWPoints &points)
{
    const QPointF one = points[0] - points[1];
    const QPointF other = points[2] - points[1];
    if (one.isNull() || other.isNull())
        return none;
    const double cross = one.x() * other.y() - one.y() * other.x();
    return std::abs(std::atan2(cross, QPointF::dotProduct(one, other))) * 180 / std::numbers::pi;
}

/// Of the circle through three points: the product of the sides over twice the triangle's doubled area.
double diameterThrough(const BWPoints &points)
{
    const double area = polygonArea(points);
    const double sides =
        distance(points[0], points[1]) * distance(points[1], points[2]) * distance(points[2], points[0]);
    return area > 0 ? sides / (2 * area) : none;
}

double diameterByRadius(const BWPoints &points)
{
    return 2 * distance(points[0], points[1]);
}

double circleArea(double diameter)
{
    return std::numbers::pi * diameter * diameter / 4;
}

/// How far the result moves when each coordinate is off by half a pixel, all of them independently.
double placementError(const BWMeasuredQuantity &quantity, BWPoints points, double pixel)
{
    const double value = quantity.measure(points);
    double squares = 0;
    for (QPointF &point : points) {
        for (const QPointF off : {QPointF(pixel / 2, 0), QPointF(0, pixel / 2)}) {
            point += off;
            const double change = quantity.measure(points) - value;
            point -= off;
            if (std::isfinite(change))
                squares += change * change;
        }
    }
    return std::sqrt(squares);
}

} // namespace

const QList<BWMeasurementKind> &BWMeasurementKind::all()
{
    using D = BWDimension;
    constexpr int many = anyNumber;
    static const QList<BWMeasurementKind> kinds{
        {u"length"_s, 2, 2, {{u"length"_s, D::Length, pathLength}}},
        {u"path"_s, 2, many, {{u"length"_s, D::Length, pathLength}}},
        {u"angle"_s, 3, 3, {{u"angle"_s, D::Angle, angle}}},
        {u"circle"_s,
         3,
         3,
         {{u"diameter"_s, D::Length, diameterThrough},
          {u"area"_s, D::Area, [](const BWPoints &points) { return circleArea(diameterThrough(points)); }}}},
        {u"radius"_s,
         2,
         2,
         {{u"diameter"_s, D::Length, diameterByRadius},
          {u"area"_s, D::Area, [](const BWPoints &points) { return circleArea(diameterByRadius(points)); }}}},
        {u"polygon"_s, 3, many, {{u"area"_s, D::Area, polygonArea}, {u"perimeter"_s, D::Length, perimeter}}},
        {u"count"_s,
         1,
         many,
         {{u"count"_s, D::Count, [](const BWPoints &points) { return static_cast<double>(points.size()); }}}},
        {u"arrow"_s, 2, 2, {}, true},
    };
    return kinds;
}

const BWMeasurementKind *BWMeasurementKind::find(const QString &identifier)
{
    const auto found = std::find_if(all().begin(), all().end(),
                                    [&](const BWMeasurementKind &kind) { return kind.identifier == identifier; });
    return found == all().end() ? nullptr : &*found;
}

double BWPictureScale::millimetresPerWidth() const
{
    return calibration.widthAt(pixels);
}

bool BWMeasurement::isComplete() const
{
    const BWMeasurementKind *found = BWMeasurementKind::find(kind);
    return found && points.size() >= found->fewestPoints && points.size() <= found->mostPoints;
}

QList<BWMeasurement::Result> BWMeasurement::results(const BWPictureScale &scale) const
{
    QList<Result> results;
    if (!isComplete() || scale.pixels.isEmpty())
        return results;
    const double pixel = 1.0 / scale.pixels.width();
    const BWLengthUnit unit = scale.isCalibrated() ? scale.unit : BWLengthUnit::Pixel;
    const double perWidth =
        scale.isCalibrated() ? scale.millimetresPerWidth() / BWLengths::millimetres(unit) : scale.pixels.width();
    for (const BWMeasuredQuantity &measured : BWMeasurementKind::find(kind)->quantities) {
        BWQuantity quantity{measured.measure(points), 0, measured.dimension, unit};
        if (measured.dimension != BWDimension::Count) {
            const int power = static_cast<int>(measured.dimension);
            const double factor = std::pow(perWidth, power);
            quantity.value *= factor;
            const double scaled = scale.isCalibrated() ? quantity.value * power * scale.calibration.relativeError : 0;
            quantity.error = std::hypot(placementError(measured, points, pixel) * factor, scaled);
        }
        results.append({measured.identifier, quantity});
    }
    return results;
}
