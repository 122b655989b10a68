// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <QByteArray>

/// A frame as a still. All operations may be called on any thread at once.
class BWStill {
public:
    BWStill() = delete;

    /// Whether the frame is a picture and nothing of it is missing. Costs the decoding of an MJPEG frame, and nothing for
    /// a raw one.
    static bool isWhole(const BWFrame &frame);

    /// The frame as a JPEG image: the camera's own bytes if it is MJPEG (with the standard Huffman tables if it leaves
    /// them out, and without padding), else encoded at quality 95 and 4:2:2. Null if the frame is not whole.
    static QByteArray jpegOf(const BWFrame &frame);
};
