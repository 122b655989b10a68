// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWLength.h"

/// A bar that shows how long things are: of a round length (1, 2 or 5 times a power of ten) that changes with the zoom.
struct BWScaleBar {
    double length = 0; ///< points on the screen; 0: there is none
    double value = 0; ///< in `unit`
    BWLengthUnit unit = BWLengthUnit::Millimetre;

    BWScaleBar() = default;
    /// The longest that is at most `longest` points. `perPoint` is how much of the thing a point shows, in millimetres; in
    /// pixels if `unit` is that. Inches and a unit that somebody has chosen are kept; other lengths take the metric unit
    /// that suits them.
    BWScaleBar(double perPoint, double longest, BWLengthUnit unit, bool isUnitChosen = false);

    /// "500 µm"
    QString text(const QLocale &locale) const;
};
