// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCaptureDevice.h"
#include "v4l2/device/BWVideoModes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <QString>
#include <vector>

class BWKernelCalls;
class BWKernelFile;

/// One entry of a menu control.
struct BWVideoMenuEntry {
    int64_t value = 0;
    QString name;
};

/// The device's control behind one of our control codes.
struct BWVideoControl {
    BWControlInfo info; ///< as the program sees it: automatic exposure is 0 or 1, whatever its menu
    uint32_t id = 0; ///< V4L2 control id; 0 for the video norm, which is no V4L2 control
    std::vector<BWVideoMenuEntry> menu; ///< of a menu control

    /// The control's value as the kernel has it; nothing if it cannot be read.
    std::optional<int32_t> readValue(const BWKernelFile &node) const;
};

/// The menu of a device's exposure modes, of which the program knows two: manual (0) and automatic (1).
class BWExposureMenu {
public:
    explicit BWExposureMenu(const std::vector<BWVideoMenuEntry> &menu);

    /// Whether the device has a manual and an automatic mode.
    bool isSwitchable() const { return m_manual && m_automatic; }

    /// Only if it is switchable.
    int32_t toDevice(double value) const { return value > 0 ? *m_automatic : *m_manual; }
    double toProgram(int64_t mode) const { return mode == m_manual ? 0 : 1; }

private:
    std::optional<int32_t> m_manual;
    std::optional<int32_t> m_automatic;
};

/// What a device can do, according to the kernel. Read once, before the device is used, without changing its state.
struct BWVideoAbilities {
    QString driver; ///< VIDIOC_QUERYCAP
    QString card;
    QString bus;
    bool captures = false; ///< a video capture device with streaming I/O
    std::vector<BWVideoMode> modes; ///< also those we do not show; common sizes stand for a range
    std::vector<BWVideoControl> controls;
    /// V4L2 standards to use for the video norms 0 NTSC, 1 PAL, 2 SECAM; nothing for a norm it lacks.
    std::array<std::optional<uint64_t>, 3> norms{};
    BWResolution current; ///< the size it is set to

    bool hasNorms() const { return norms[0] || norms[1] || norms[2]; }
    /// Sizes in formats that we show, ascending by area, each once.
    std::vector<BWResolution> resolutions() const;

    /// Reads the first four members from an open node; a negative errno number on failure.
    int identify(const BWKernelFile &node);

    /// Opens and closes the node. Returns nothing if it cannot be opened or is no V4L2 device, and the errno number in
    /// `error`.
    static std::optional<BWVideoAbilities> read(BWKernelCalls &kernel, const char *path, int &error);
};
