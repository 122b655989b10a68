#pragma once

#include "BWACUDriver/BWFrame.h"
#include "media/BWYuvPlanes.h"

/// From the raw formats of cameras to the planes that JPEG means: BT.601, full range.
namespace BWYuvConvert {

/// Whether the planes of the frame are there and as large as its size and format demand.
bool isWhole(const BWFrameInfo &info);

/// Unpacks a YUYV, UYVY, NV12, YU12 or GREY frame that is whole, and converts range and matrix. False for other
/// formats. The chroma planes of a GREY frame stay undefined.
bool toJpegPlanes(const BWFrameInfo &info, BWYuvPlanes &planes);

/// Converts planes in place to BT.601, full range.
void toJpegColours(BWYuvPlanes &planes, BWColorMatrix matrix, BWColorRange range);

} // namespace BWYuvConvert
