// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWScaleBar.h"

#include <cmath>

namespace {

/// The largest of 1, 2, 5, 10, 20, ... that is not above the limit.
double roundBelow(double limit)
{
    const double power = std::pow(10, std::floor(std::log10(limit)));
    for (const double step : {5.0, 2.0}) {
        if (step * power <= limit * (1 + 1e-9))
            return step * power;
    }
    return power;
}

} // namespace

BWScaleBar::BWScaleBar(double perPoint, double longest, BWLengthUnit wanted, bool isUnitChosen)
{
    if (!(perPoint > 0) || !(longest > 0) || !std::isfinite(perPoint * longest))
        return;
    const double most = perPoint * longest;
    const bool isKept = isUnitChosen || wanted == BWLengthUnit::Inch || wanted == BWLengthUnit::Pixel;
    unit = isKept ? wanted : BWLengths::unitFor(most);
    const double size = unit == BWLengthUnit::Pixel ? 1 : BWLengths::millimetres(unit);
    value = roundBelow(most / size);
    length = value * size / perPoint;
}

QString BWScaleBar::text(const QLocale &locale) const
{
    // As many digits as a round number has.
    const double step = std::pow(10, std::floor(std::log10(value) + 1e-9));
    return BWLengths::text({value, 3 * step, BWDimension::Length, unit}, locale);
}
