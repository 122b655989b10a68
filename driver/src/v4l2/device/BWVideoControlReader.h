#pragma once

#include "v4l2/BWKernelFile.h"
#include "v4l2/device/BWVideoAbilities.h"

/// Asks an open node which of our controls it has, by their V4L2 ids: names differ from driver to driver. Sets nothing.
class BWVideoControlReader {
public:
    explicit BWVideoControlReader(const BWKernelFile &node) : m_node(node) { }

    std::vector<BWVideoControl> controls() const;

    /// The control's value as the kernel has it; nothing where it cannot be read.
    static std::optional<int32_t> value(const BWKernelFile &node, uint32_t id);

private:
    std::optional<BWVideoControl> control(int identifier, uint32_t id) const;
    std::vector<BWVideoMenuEntry> menu(uint32_t id, int64_t min, int64_t max) const;

    const BWKernelFile &m_node;
};
