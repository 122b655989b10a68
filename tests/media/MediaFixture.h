#pragma once

#include "BWACUDriver/BWFrame.h"

#include <QByteArray>

/// What the media tests share: frames and JPEG images made without the code under test.
namespace MediaFixture {

/// A baseline JPEG image with plenty of detail, different for each seed, with the standard Huffman tables.
QByteArray detailedJpeg(int width, int height, int seed = 1);

/// All Huffman table segments of the image without marker and length, and the image without them.
QByteArray huffmanTablesOf(const QByteArray &jpeg);
QByteArray withoutHuffmanTables(const QByteArray &jpeg);

BWFrame jpegFrame(const QByteArray &jpeg, int width, int height, std::chrono::microseconds time);

} // namespace MediaFixture
