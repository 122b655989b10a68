#pragma once

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"
#include "media/BWYuvPlanes.h"

#include <memory>
#include <optional>
#include <QString>
#include <span>

/// Reads the pictures of a movie one after the other, over and over again. A damaged picture is left out and logged
/// once. One thread at a time.
class BWMovieReader {
public:
    /// Opens the movie and steps to its first good picture. Null, with the reason in `error`, if there is none.
    static std::unique_ptr<BWMovieReader> open(const QString &path, QString &error);
    ~BWMovieReader();

    BWResolution size() const;
    double frameRate() const;

    /// MJPEG or YUYV if the pictures are stored as cameras deliver them; then packet() is such a picture.
    std::optional<BWPixelFormat> nativeFormat() const;
    /// What the numbers of the pictures mean.
    BWColorMatrix matrix() const;
    BWColorRange range() const;

    /// Steps to the next good picture, after the last one to the first again. False, for good, when a whole round has
    /// brought none: the file has been damaged or has gone; the current picture stays.
    bool advance();
    /// Steps to the first picture.
    bool rewind();

    /// The current picture as it is stored; empty unless nativeFormat() tells one.
    std::span<const uint8_t> packet() const;

    /// The current picture, scaled to fill the size and cropped at its middle, as planes of full range and of that
    /// matrix (one other than BT.601 only if the movie has it). False if it cannot be decoded.
    bool decode(BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes);

private:
    struct Private;
    explicit BWMovieReader(std::unique_ptr<Private> priv);
    std::unique_ptr<Private> d;
};
