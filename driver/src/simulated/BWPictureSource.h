#pragma once

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"

#include <cstdint>
#include <optional>
#include <vector>

/// The camera controls as a picture sees them: each from -1 to 1, and 0 leaves the picture as it is.
struct BWPictureControls {
    double hue = 0;
    double contrast = 0;
    double saturation = 0;
    double brightness = 0;
    double sharpness = 0;
    double gamma = 0;
    double whiteBalance = 0; ///< -1 bluish, 1 reddish
    double gain = 0; ///< brighter, and noisier
    double backlight = 0; ///< lifts the shadows
    double exposure = 0;

    bool operator==(const BWPictureControls &) const = default;
    bool isNeutral() const { return *this == BWPictureControls{}; }
};

/// What a simulated camera looks at. Used by one thread, the camera's capture thread.
class BWPictureSource {
public:
    virtual ~BWPictureSource() = default;

    /// Called before the first picture and on every change of size.
    virtual void setResolution(BWResolution resolution) = 0;
    virtual void setControls(const BWPictureControls &controls) = 0;

    /// Frames per second that the source itself has at the current size; nothing if the camera decides.
    virtual std::optional<double> frameRate() const { return std::nullopt; }
    /// The format in which the source's own bytes can be handed on unchanged at the current size; nothing if the
    /// camera decides.
    virtual std::optional<BWPixelFormat> nativeFormat() const { return std::nullopt; }
    virtual BWColorMatrix matrix() const { return BWColorMatrix::BT601; }
    virtual BWColorRange range() const { return BWColorRange::Limited; }

    /// Draws picture number `index` (they follow each other, gaps included) as packed YUYV.
    virtual void renderYUYV(uint64_t index, uint8_t *pixels, int stride) = 0;
    /// The same picture as one JPEG image.
    virtual void renderJPEG(uint64_t index, std::vector<uint8_t> &jpeg) = 0;
};
