// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWJpegSegments.h"

/// The resolution in a picture file, by which other programs show real sizes.
namespace BWPictureResolution {

/// Sets it in the JFIF segment, if there is one, and in the Exif segment, which is made if there is none. Everything else in
/// them keeps its bytes and its place. An Exif segment that is damaged or full stays as it is.
///
/// JFIF has whole numbers per centimetre or inch; the closer one is taken. Where neither comes close, it says nothing.
void set(BWJpegSegments &jpeg, double pixelsPerCentimetre);

} // namespace BWPictureResolution
