// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"
#include "media/BWYuvPlanes.h"

#include <memory>
#include <optional>
#include <QString>
#include <span>

/// Reads the pictures of a movie in order, in an endless loop. Damaged pictures are left out, and logged once. One
/// thread at a time.
class BWMovieReader {
public:
    virtual ~BWMovieReader() = default;

    /// Opens the movie and steps to its first good picture. Null, with the reason in `error`, if there is none.
    static std::unique_ptr<BWMovieReader> open(const QString &path, QString &error);

    virtual BWResolution size() const = 0;
    virtual double frameRate() const = 0;

    /// MJPEG or YUYV if the pictures are stored as cameras deliver them; then packet() is such a picture.
    virtual std::optional<BWPixelFormat> nativeFormat() const = 0;
    /// How the values of the pictures are to be interpreted.
    virtual BWColorMatrix matrix() const = 0;
    virtual BWColorRange range() const = 0;

    /// Steps to the next good picture, from the last one to the first. False from then on if a whole round has found
    /// none, because the file has been damaged or removed; the current picture stays.
    virtual bool advance() = 0;
    /// Steps to the first picture.
    virtual bool rewind() = 0;

    /// The current picture as it is stored; empty without a nativeFormat().
    virtual std::span<const uint8_t> packet() const = 0;
    /// Keeps the bytes of packet() valid, without a copy.
    virtual std::shared_ptr<const void> packetKeeper() const = 0;

    /// The current picture, scaled to fill the size and cropped at its middle, as planes of full range and of that
    /// matrix (one other than BT.601 only if the movie has it). False if it cannot be decoded.
    virtual bool decode(BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes) = 0;
};
