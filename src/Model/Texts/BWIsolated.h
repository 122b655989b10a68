// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGuiApplication>
#include <QString>

/// Keeps a text in its own order, which its first letter tells, among texts that are read from the right: numbers with their
/// units ("12.5 mm", "5 × 5 mm"), and names that may have both. Elsewhere it stays as it is. GUI thread.
inline QString bwIsolated(const QString &text)
{
    constexpr QChar begin(0x2068);
    constexpr QChar end(0x2069);
    return QGuiApplication::isRightToLeft() ? begin + text + end : text;
}
