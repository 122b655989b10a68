// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWStill.h"

#include "media/BWJpeg.h"

namespace {
constexpr int stillQuality = 95;
}

bool BWStill::isWhole(const BWFrame &frame)
{
    if (frame.pixelFormat() != BWPixelFormat::MJPEG)
        return frame.info().isWholeRawPicture();
    const BWPlane &bytes = frame.plane(0);
    return BWJpeg::decodesCleanly(bytes.data, bytes.size);
}

QByteArray BWStill::jpegOf(const BWFrame &frame)
{
    if (frame.pixelFormat() != BWPixelFormat::MJPEG)
        return BWJpeg::encode(frame, stillQuality);
    const BWPlane &bytes = frame.plane(0);
    return isWhole(frame) ? BWJpeg::withHuffmanTables(bytes.data, bytes.size) : QByteArray();
}
