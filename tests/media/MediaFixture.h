// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <QByteArray>

/// What the media tests share: frames and JPEG images made without the code under test.
namespace MediaFixture {

/// A baseline JPEG image with plenty of detail, different for each seed, with the standard Huffman tables.
QByteArray detailedJpeg(int width, int height, int seed = 1);

/// The image without its Huffman table segments.
QByteArray withoutHuffmanTables(QByteArray jpeg);

BWFrame jpegFrame(const QByteArray &jpeg, int width, int height, std::chrono::microseconds time);

} // namespace MediaFixture
