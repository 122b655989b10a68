// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "v4l2/BWKernelCalls.h"

#include <atomic>
#include <memory>

/// The button of a camera, which the kernel reports as a key of an input device. Capture thread, except isOpen().
class BWButtonReader {
public:
    explicit BWButtonReader(BWKernelCalls &kernel) : m_kernel(kernel) { }

    /// `path` is the event node; empty if the camera has no button. Earlier presses do not count.
    void open(const char *path);
    void close();

    /// Any thread.
    bool isOpen() const { return m_isOpen; }
    /// To poll; -1 while closed.
    int descriptor() const { return m_node ? m_node->descriptor() : -1; }

    /// The number of presses since the last call. Closes itself when the node is gone, as after an unplug.
    int takePresses();

private:
    BWKernelCalls &m_kernel;
    std::unique_ptr<const BWKernelFile> m_node;
    std::atomic<bool> m_isOpen = false;
};
