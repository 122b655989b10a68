// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWLength.h"

#include "Model/Texts/BWIsolated.h"

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

struct Unit {
    BWLengthUnit unit;
    double millimetres;
    QString symbol;
};

const std::array<Unit, 5> &units()
{
    static const std::array<Unit, 5> all{{
        {BWLengthUnit::Micrometre, 0.001, u"µm"_s},
        {BWLengthUnit::Millimetre, 1, u"mm"_s},
        {BWLengthUnit::Centimetre, 10, u"cm"_s},
        {BWLengthUnit::Inch, 25.4, u"in"_s},
        {BWLengthUnit::Pixel, 0, u"px"_s},
    }};
    return all;
}

const Unit &find(BWLengthUnit unit)
{
    return *std::find_if(units().begin(), units().end(), [unit](const Unit &one) { return one.unit == unit; });
}

/// The decimal place of the last digit worth showing: 2 for hundredths, -1 for tens.
int lastPlace(const BWQuantity &quantity)
{
    if (quantity.dimension == BWDimension::Count)
        return quantity.value == std::round(quantity.value) ? 0 : 1; // a mean of counts
    const double error = quantity.error;
    if (!(error > 0) || !std::isfinite(error))
        return 3;
    const int first = static_cast<int>(-std::floor(std::log10(error)));
    const double digit = error * std::pow(10, first);
    return std::clamp(digit < 2 ? first + 1 : first, -9, 9);
}

/// Five digits and more before the decimal sign in groups of three, with narrow spaces, which no language takes for one.
QString grouped(QString digits)
{
    const auto isDigit = [](QChar one) { return one.isDigit(); };
    const auto first = std::find_if(digits.cbegin(), digits.cend(), isDigit) - digits.cbegin();
    auto at = std::find_if_not(digits.cbegin() + first, digits.cend(), isDigit) - digits.cbegin();
    if (at - first > 4) {
        for (at -= 3; at > first; at -= 3)
            digits.insert(at, QChar(0x202f));
    }
    return digits;
}

} // namespace

double BWLengths::millimetres(BWLengthUnit unit)
{
    return find(unit).millimetres;
}

BWLengthUnit BWLengths::unitFor(double millimetres)
{
    return millimetres >= 10 ? BWLengthUnit::Centimetre
        : millimetres >= 1   ? BWLengthUnit::Millimetre
                             : BWLengthUnit::Micrometre;
}

QString BWLengths::symbol(BWLengthUnit unit, BWDimension dimension)
{
    switch (dimension) {
    case BWDimension::Count:
        return {};
    case BWDimension::Angle:
        return u"°"_s;
    case BWDimension::Length:
        return find(unit).symbol;
    case BWDimension::Area:
        return find(unit).symbol + u"²"_s;
    }
    return {};
}

QString BWLengths::number(const BWQuantity &quantity, const QLocale &locale)
{
    if (!std::isfinite(quantity.value))
        return u"–"_s;
    const int place = lastPlace(quantity);
    const double step = std::pow(10, -place);
    double rounded = place < 0 ? std::round(quantity.value / step) * step : quantity.value;
    if (std::abs(rounded) < step / 2)
        rounded = 0; // not "-0.0"
    QLocale plain = locale;
    plain.setNumberOptions(QLocale::OmitGroupSeparator);
    return plain.toString(rounded, 'f', std::max(0, place));
}

QString BWLengths::text(const BWQuantity &quantity, const QLocale &locale)
{
    const QString unit = symbol(quantity.unit, quantity.dimension);
    QString digits = grouped(number(quantity, locale));
    if (unit.isEmpty() || !std::isfinite(quantity.value))
        return digits;
    // A degree sign stands close to its number, units a no-break space away.
    return bwIsolated(quantity.dimension == BWDimension::Angle ? digits + unit : digits + QChar::Nbsp + unit);
}

QString BWLengths::percent(double share, const QLocale &locale)
{
    const double percent = share * 100;
    return bwIsolated(locale.toString(percent, 'f', percent < 1 ? 2 : 1) + QChar::Nbsp + u'%');
}

double BWLengths::parsed(const QString &typed, BWLengthUnit fallback, const QLocale &locale)
{
    QString text = typed.trimmed().toLower();
    text.replace(u'μ', u'µ'); // the Greek letter looks the same
    BWLengthUnit unit = fallback;
    for (const Unit &one : units()) {
        for (const QString &symbol : {one.symbol, QString(one.symbol).replace(u'µ', u'u')}) {
            if (one.millimetres > 0 && text.endsWith(symbol)) {
                unit = one.unit;
                text.chop(symbol.size());
                text = text.trimmed();
            }
        }
    }
    bool valid = false;
    double number = locale.toDouble(text, &valid);
    if (!valid)
        number = text.toDouble(&valid);
    const double length = number * millimetres(unit);
    return valid && std::isfinite(length) && length > 0 ? length : 0;
}
