#pragma once

#include "v4l2/BWKernelFile.h"
#include "v4l2/device/BWVideoAbilities.h"

/// Reads which of the video norms 0 NTSC, 1 PAL and 2 SECAM a device has. Sets nothing.
class BWVideoNorms {
public:
    /// Those of the input that is set now.
    static std::array<std::optional<uint64_t>, 3> read(const BWKernelFile &node);

    /// The control that stands for the choice among them. It is no V4L2 control, so its id is 0.
    static BWVideoControl control(const BWKernelFile &node, const std::array<std::optional<uint64_t>, 3> &norms);
};
