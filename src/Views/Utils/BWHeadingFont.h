#pragma once

#include <QFont>

/// The font of a heading among texts of that font, larger by that factor. Bold, as fonts of Japanese seldom have a weight
/// in between.
QFont bwHeadingFont(const QFont &font, double scale);
