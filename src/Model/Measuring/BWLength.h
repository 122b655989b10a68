// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>

/// Units in which lengths are shown and entered. Pixels are those of the picture in its full resolution: what is left when
/// nobody has said how long anything is.
enum class BWLengthUnit { Micrometre, Millimetre, Centimetre, Inch, Pixel };

/// What a number measures: the power of the unit, or something that has none.
enum class BWDimension { Count = -1, Angle = 0, Length = 1, Area = 2 };

/// A measured number with its expected error, one standard deviation. Lengths and areas in the unit and its square, angles in
/// degrees. A value that is not finite could not be measured.
struct BWQuantity {
    double value = 0;
    double error = 0;
    BWDimension dimension = BWDimension::Length;
    BWLengthUnit unit = BWLengthUnit::Pixel;
};

/// How lengths are converted and written.
namespace BWLengths {

/// So many millimetres is one of the unit; 0 for pixels.
double millimetres(BWLengthUnit unit);

/// The unit in which a length of so many millimetres reads best: the largest metric one that makes it at least 1.
BWLengthUnit unitFor(double millimetres);

/// "µm", "mm²", "°", or nothing for a count.
QString symbol(BWLengthUnit unit, BWDimension dimension = BWDimension::Length);

/// The number alone, with as many digits as its error allows: the last one shown is that of the error's first digit, or the
/// next if that is a 1. Never with a group separator. A dash for what could not be measured.
QString number(const BWQuantity &quantity, const QLocale &locale);

/// The number with its unit: "12.34 mm". Stays in this order also where the program is read from the right.
QString text(const BWQuantity &quantity, const QLocale &locale);

/// A relative error: "0.4 %".
QString percent(double share, const QLocale &locale);

/// A number and perhaps a unit as a person types it, with the locale's decimal sign or a point: "1,5 mm", "200 um", "0.1in".
/// Without a unit it is in `fallback`. Millimetres; 0 if it is no length above zero.
double parsed(const QString &typed, BWLengthUnit fallback, const QLocale &locale);

} // namespace BWLengths
