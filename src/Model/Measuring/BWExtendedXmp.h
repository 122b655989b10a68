// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWJpegSegments.h"
#include "Model/Measuring/BWXmp.h"

/// The XMP of a JPEG file: a main part in one segment, and, where that is too small, a rest in others.
struct BWExtendedXmp {
    BWXmp main;
    BWXmp rest;
    bool restDamaged = false; ///< or not whole

    /// Nothing if the main part is damaged. Both are empty where there are none.
    static std::optional<BWExtendedXmp> from(const BWJpegSegments &jpeg);

    /// The part that has the property; the main one if neither has.
    BWXmp &holding(const QByteArray &path) { return rest.has(path) ? rest : main; }
    const BWXmp &holding(const QByteArray &path) const { return rest.has(path) ? rest : main; }

    /// Puts both in place of what is there. Moves the property `large` to the rest if the main part is too large with it.
    /// False, and nothing changes in the file, if it still is.
    bool writeTo(BWJpegSegments &jpeg, const QByteArray &large);
};
