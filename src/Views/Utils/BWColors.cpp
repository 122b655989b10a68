// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWColors.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double disabledShare = 0.45; // of the text colour
constexpr double edgeShare = 0.3;
constexpr double edgeContrast = 1.3 * BWColors::visible; // a thin round line is drawn lighter than its colour

double luminance(const QColor &color)
{
    const auto linear = [](float part) {
        return part <= 0.04045F ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// What is seen of a colour that may be translucent.
QColor seenOn(const QColor &ground, const QColor &color)
{
    return BWColors::mixed(ground, color, color.alphaF());
}

bool isUnlike(const QColor &disabled, const QColor &enabled, const QColor &ground)
{
    constexpr double different = 2;
    constexpr double discernible = 1.5;
    return BWColors::contrast(disabled, enabled) >= different && BWColors::contrast(disabled, ground) >= discernible;
}

} // namespace

double BWColors::contrast(const QColor &one, const QColor &other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor BWColors::mixed(const QColor &ground, const QColor &color, double share)
{
    const auto mix = [share](int from, int to) { return qRound(from + (to - from) * share); };
    return {mix(ground.red(), color.red()), mix(ground.green(), color.green()), mix(ground.blue(), color.blue())};
}

QColor BWColors::on(const QColor &ground, const QColor &wanted, double least)
{
    const QColor seen = seenOn(ground, wanted);
    const bool isLighter = luminance(seen) > luminance(ground);
    QColor end = isLighter ? Qt::white : Qt::black;
    if (contrast(end, ground) < least)
        end = isLighter ? Qt::black : Qt::white;
    constexpr int steps = 128; // fine enough to keep an accent that is just readable apart from a dark window
    for (int step = 0; step < steps; ++step) {
        const QColor shade = mixed(seen, end, double(step) / steps);
        if (contrast(shade, ground) >= least)
            return shade;
    }
    return end;
}

bool BWColors::isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

bool BWColors::isHighContrast(const QPalette &palette)
{
    constexpr double pure = 20;
    return contrast(palette.color(QPalette::Active, QPalette::WindowText), palette.color(QPalette::Window)) > pure;
}

QColor BWColors::accent(const QPalette &palette)
{
    return on(palette.color(QPalette::Window), palette.color(QPalette::Active, QPalette::Highlight), visible);
}

QColor BWColors::disabled(const QPalette &palette)
{
    const QColor ground = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    const QColor chosen = seenOn(ground, palette.color(QPalette::Disabled, QPalette::WindowText));
    return isUnlike(chosen, text, ground) ? chosen : mixed(ground, text, disabledShare);
}

QColor BWColors::edge(const QPalette &palette)
{
    const QColor ground = palette.color(QPalette::Window);
    return on(ground, line(palette, edgeShare), edgeContrast);
}

QColor BWColors::line(const QPalette &palette, double share)
{
    const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    return isHighContrast(palette) ? text : mixed(palette.color(QPalette::Window), text, share);
}

std::optional<QPalette> BWColors::wanted(const QPalette &own, std::optional<bool> dark, bool highContrast)
{
    const bool becomesDark = dark.value_or(isDark(own));
    if (becomesDark == isDark(own) && (!highContrast || isHighContrast(own)))
        return std::nullopt;
    struct Scheme {
        QColor button, window, base, highlight, highlightedText;
    };
    static const Scheme schemes[]{{0xeff0f1, 0xeff0f1, Qt::white, 0x2a76c6, Qt::white},
                                  {0x3a3d41, 0x2b2d30, 0x1e1f22, 0x3584e4, Qt::white},
                                  {Qt::white, Qt::white, Qt::white, Qt::blue, Qt::white},
                                  {Qt::black, Qt::black, Qt::black, Qt::yellow, Qt::black}};
    const Scheme &scheme = schemes[2 * int(highContrast) + int(becomesDark)];
    QPalette palette(scheme.button, scheme.window);
    palette.setColor(QPalette::Base, scheme.base);
    palette.setColor(QPalette::AlternateBase, mixed(scheme.base, scheme.window, 0.5));
    palette.setColor(QPalette::Highlight, scheme.highlight);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, Qt::gray);
    palette.setColor(QPalette::HighlightedText, scheme.highlightedText);
    palette.setColor(QPalette::ToolTipBase, scheme.window);
    palette.setColor(QPalette::ToolTipText, palette.color(QPalette::WindowText));
    for (const QPalette::ColorRole role : {QPalette::Link, QPalette::LinkVisited})
        palette.setColor(role, scheme.highlight);
    mend(palette);
    return palette;
}

void BWColors::mend(QPalette &palette)
{
    const auto shade = [&palette](QPalette::ColorRole role, QPalette::ColorRole ground) {
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
            palette.setColor(group, role, on(palette.color(group, ground), palette.color(group, role), readable));
    };
    shade(QPalette::Highlight, QPalette::HighlightedText);
    shade(QPalette::PlaceholderText, QPalette::Base);
    shade(QPalette::Link, QPalette::Window);
    shade(QPalette::LinkVisited, QPalette::Window);
    for (const auto &[role, groundRole] :
         {std::pair(QPalette::WindowText, QPalette::Window), std::pair(QPalette::Text, QPalette::Base),
          std::pair(QPalette::ButtonText, QPalette::Button)}) {
        const QColor ground = palette.color(QPalette::Active, groundRole);
        const QColor text = palette.color(QPalette::Active, role);
        if (!isUnlike(seenOn(ground, palette.color(QPalette::Disabled, role)), text, ground))
            palette.setColor(QPalette::Disabled, role, mixed(ground, text, disabledShare));
    }
}
