// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QColor>
#include <QPalette>

/// Colours that can be told from what they lie on, in every palette: whatever we paint ourselves takes them from here.
/// Contrast is that of the Web Content Accessibility Guidelines, from 1 to 21. Any thread.
class BWColors {
public:
    BWColors() = delete;

    static constexpr double readable = 4.5; ///< the least contrast of a text
    static constexpr double visible = 3; ///< of an icon, a mark, the edge of a control
    static constexpr QColor mark{0x27, 0xae, 0x60}; ///< of what is chosen, where it needs no other

    static double contrast(const QColor &one, const QColor &other);
    /// So much of a colour in an opaque ground.
    static QColor mixed(const QColor &ground, const QColor &color, double share);
    /// That colour, or the nearest lighter or darker shade of it that has so much contrast on an opaque ground.
    static QColor on(const QColor &ground, const QColor &wanted, double least);

    /// Whether texts are light on a dark window.
    static bool isDark(const QPalette &palette);
    /// Whether the desktop shows as much contrast as there is: pure white and pure black.
    static bool isHighContrast(const QPalette &palette);

    /// The highlight colour, for marks and rings on the window.
    static QColor accent(const QPalette &palette);
    /// Of texts and icons that cannot be used; never like those that can.
    static QColor disabled(const QPalette &palette);
    /// The edge by which a control is recognised.
    static QColor edge(const QPalette &palette);
    /// A line that only divides. In high contrast as strong as text, else a share of it.
    static QColor line(const QPalette &palette, double share = 0.18);

    /// The palette for a desktop that wants the program dark or light, or in high contrast. Nothing if what the program has by
    /// itself will do.
    static std::optional<QPalette> wanted(const QPalette &own, std::optional<bool> dark, bool highContrast);
    /// Makes selected texts, placeholders and links readable, and disabled texts unlike others.
    static void mend(QPalette &palette);
};
