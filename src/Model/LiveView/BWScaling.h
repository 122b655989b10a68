// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <libyuv.h>
#include <QSize>

namespace BWScaling {

/// The best of libyuv's filters for making a 32-bit picture that much smaller. That is its box filter, except for a
/// quarter of the width together with a sixth, a tenth ... of the height: there it ends the program.
inline libyuv::FilterMode filterFor(QSize from, QSize to)
{
    const bool endsProgram = from.width() == 4 * to.width() && from.height() % (4 * to.height()) == 2 * to.height();
    return endsProgram ? libyuv::kFilterBilinear : libyuv::kFilterBox;
}

} // namespace BWScaling
