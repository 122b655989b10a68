#pragma once

#include "BWACUDriver/BWFrame.h"

#include <QByteArray>
#include <QColor>
#include <QJsonObject>
#include <QStringList>

/// What the media tests share: frames and JPEG images made without the code under test, and ffmpeg's view of a file.
namespace MediaFixture {

/// A baseline JPEG image with plenty of detail, different for each seed, with the standard Huffman tables.
QByteArray detailedJpeg(int width, int height, int seed = 1);

/// All Huffman table segments of the image without marker and length, and the image without them.
QByteArray huffmanTablesOf(const QByteArray &jpeg);
QByteArray withoutHuffmanTables(const QByteArray &jpeg);

BWFrame jpegFrame(const QByteArray &jpeg, int width, int height, std::chrono::microseconds time);

/// A frame whose left half has the one colour and whose right half the other.
BWFrame twoColourFrame(BWPixelFormat format, int width, int height, QColor left, QColor right, BWColorMatrix matrix,
                       BWColorRange range, std::chrono::microseconds time = {});

/// Runs a program; its standard output, or a null array if it failed (and a line in the test's log).
QByteArray run(const QString &program, const QStringList &arguments);
/// The first video stream as ffprobe sees it, its packets counted; empty if the file cannot be read.
QJsonObject probe(const QString &file);
/// The stored pictures of an MJPEG movie, in order.
QList<QByteArray> storedPictures(const QString &file);

} // namespace MediaFixture
