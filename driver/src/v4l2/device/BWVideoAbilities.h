#pragma once

#include "BWACUDriver/BWCaptureDevice.h"

#include <array>
#include <cstdint>
#include <optional>
#include <QString>
#include <vector>

class BWKernelCalls;
class BWKernelFile;

/// The time from one frame to the next: a fraction of seconds, 0/0 if not known.
struct BWVideoInterval {
    uint32_t numerator = 0;
    uint32_t denominator = 0;
};

/// A pixel format at a size, and how fast the device says it delivers that.
struct BWVideoMode {
    uint32_t fourcc = 0; ///< V4L2 pixel format
    BWPixelFormat pixelFormat = BWPixelFormat::None; ///< ours; None for a format that we do not show
    BWResolution resolution;
    double framesPerSecond = 0; ///< the highest; 0 if the device does not say
    BWVideoInterval interval; ///< the same, as the device put it
};

/// One entry of a menu control.
struct BWVideoMenuEntry {
    int64_t value = 0;
    QString name;
};

/// A control of the device that stands behind one of our control codes.
struct BWVideoControl {
    BWControlInfo info; ///< as the program sees it: automatic exposure is 0 or 1, whatever its menu
    uint32_t id = 0; ///< V4L2 control id; 0 for the video norm, which is no V4L2 control
    std::vector<BWVideoMenuEntry> menu; ///< of a menu control
};

/// What a device can do, as the kernel tells. Read once, before the device is used; does not change its state.
struct BWVideoAbilities {
    QString driver; ///< VIDIOC_QUERYCAP
    QString card;
    QString bus;
    bool captures = false; ///< a video capture device with streaming I/O
    std::vector<BWVideoMode> modes; ///< also those we do not show, for the listing; stepwise sizes as a few common ones
    std::vector<BWVideoControl> controls;
    /// V4L2 standards to use for the video norms 0 NTSC, 1 PAL, 2 SECAM; nothing for a norm that it does not have.
    std::array<std::optional<uint64_t>, 3> norms{};
    BWResolution current; ///< the size it is set to

    bool hasNorms() const { return norms[0] || norms[1] || norms[2]; }
    /// Sizes in formats that we show, ascending by area, each once.
    std::vector<BWResolution> resolutions() const;

    /// Reads the first four of an open node; a negative errno number on failure.
    int identify(const BWKernelFile &node);

    /// Opens and closes the node. Returns nothing, and the errno number in `error`, where it cannot be opened or is no
    /// V4L2 device.
    static std::optional<BWVideoAbilities> read(BWKernelCalls &kernel, const char *path, int &error);
};
