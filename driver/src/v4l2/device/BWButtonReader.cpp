// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWButtonReader.h"

#include "base/BWDriverLog.h"

#include <array>
#include <cerrno>
#include <linux/input.h>

void BWButtonReader::open(const char *path)
{
    close();
    if (!*path)
        return;
    auto node = std::make_unique<const BWKernelFile>(m_kernel, path, O_RDONLY);
    if (!node->isOpen()) {
        qCInfo(bwDriver) << "The button of the camera cannot be read:" << path << kernelErrorText(node->openError());
        return;
    }
    m_node = std::move(node);
    m_isOpen = true;
}

void BWButtonReader::close()
{
    m_isOpen = false;
    m_node.reset();
}

int BWButtonReader::takePresses()
{
    int presses = 0;
    while (m_node) {
        std::array<input_event, 32> events;
        const ssize_t size = m_node->read(events.data(), sizeof events);
        if (size == -EAGAIN)
            break;
        if (size <= 0) {
            close();
            break;
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(size) / sizeof(input_event); ++i) {
            // The value is 0 for a release and 2 for autorepeat.
            if (events[i].type == EV_KEY && events[i].code == KEY_CAMERA && events[i].value == 1)
                ++presses;
        }
    }
    return presses;
}
