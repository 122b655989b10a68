#pragma once

#include "v4l2/BWKernelFile.h"
#include "v4l2/device/BWVideoAbilities.h"

/// Asks an open node which pixel formats it has, in which sizes and how fast. Sets nothing.
class BWVideoModeReader {
public:
    explicit BWVideoModeReader(const BWKernelFile &node) : m_node(node) { }

    std::vector<BWVideoMode> modes() const;

private:
    void addSizes(uint32_t fourcc, std::vector<BWVideoMode> &modes) const;
    std::vector<BWResolution> enumeratedSizes(uint32_t fourcc) const;
    std::vector<BWResolution> triedSizes(uint32_t fourcc) const;
    void readRate(BWVideoMode &mode) const;

    const BWKernelFile &m_node;
};
