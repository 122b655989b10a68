// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWVideoBuffers.h"

#include "base/BWDriverLog.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

v4l2_buffer bufferNumber(uint32_t index)
{
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    return buffer;
}

} // namespace

BWVideoBuffers::~BWVideoBuffers()
{
    for (Mapping &mapping : m_mappings)
        unmap(mapping);
}

int BWVideoBuffers::begin(const BWKernelFile &node, uint32_t wanted)
{
    const std::lock_guard lock(m_mutex);
    m_kernel = &node.kernel();
    m_node = &node;
    uint32_t granted = 0;
    int result = request(wanted, granted);
    // A large picture may not fit that many times.
    for (uint32_t fewer = wanted / 2; result == -ENOMEM && fewer >= 2; fewer /= 2)
        result = request(fewer, granted);
    if (result < 0)
        return result;
    m_mappings.resize(granted);
    for (uint32_t index = 0; index < granted; ++index) {
        result = map(index, m_mappings[index]);
        if (result >= 0)
            result = queue(index);
        if (result < 0)
            break;
    }
    // Buffers that are not mapped are not queued either, so never filled.
    return m_queued >= 2 || (result >= 0 && m_queued > 0) ? 0 : (result < 0 ? result : -ENOMEM);
}

void BWVideoBuffers::end()
{
    const BWKernelFile *node = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        node = std::exchange(m_node, nullptr);
    }
    if (!node)
        return;
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    node->ioctl(VIDIOC_STREAMOFF, type);
    {
        const std::lock_guard lock(m_mutex);
        m_queued = 0;
        for (Mapping &mapping : m_mappings) {
            if (!mapping.held)
                unmap(mapping);
        }
    }
    // Frees the device for others at once, although the mappings of held frames keep the closed file alive.
    v4l2_requestbuffers none{};
    none.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    none.memory = V4L2_MEMORY_MMAP;
    node->ioctl(VIDIOC_REQBUFS, none);
}

int BWVideoBuffers::take(v4l2_buffer &buffer)
{
    buffer = bufferNumber(0);
    const int result = m_node->ioctl(VIDIOC_DQBUF, buffer);
    if (result < 0)
        return result;
    const std::lock_guard lock(m_mutex);
    if (buffer.index >= m_mappings.size() || !m_mappings[buffer.index].address)
        return -EINVAL;
    --m_queued;
    m_mappings[buffer.index].held = true;
    return 0;
}

const uint8_t *BWVideoBuffers::data(const v4l2_buffer &buffer) const
{
    return static_cast<const uint8_t *>(m_mappings[buffer.index].address);
}

std::size_t BWVideoBuffers::bytesUsed(const v4l2_buffer &buffer) const
{
    return std::min<std::size_t>(buffer.bytesused, m_mappings[buffer.index].length);
}

BWFrame BWVideoBuffers::frame(const v4l2_buffer &buffer, const BWFrameInfo &info)
{
    return BWFrame(
        info, [this, index = buffer.index] { putBack(index); }, shared_from_this());
}

bool BWVideoBuffers::anyQueued() const
{
    const std::lock_guard lock(m_mutex);
    return m_queued > 0;
}

int BWVideoBuffers::request(uint32_t count, uint32_t &granted)
{
    v4l2_requestbuffers wanted{};
    wanted.count = count;
    wanted.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    wanted.memory = V4L2_MEMORY_MMAP;
    const int result = m_node->ioctl(VIDIOC_REQBUFS, wanted);
    granted = result < 0 ? 0 : wanted.count;
    return result;
}

int BWVideoBuffers::map(uint32_t index, Mapping &mapping)
{
    v4l2_buffer buffer = bufferNumber(index);
    if (const int result = m_node->ioctl(VIDIOC_QUERYBUF, buffer); result < 0)
        return result;
    int error = ENOMEM;
    mapping.address = m_kernel->map(m_node->descriptor(), buffer.length, buffer.m.offset, error);
    mapping.length = buffer.length;
    return mapping.address ? 0 : -error;
}

int BWVideoBuffers::queue(uint32_t index)
{
    v4l2_buffer buffer = bufferNumber(index);
    const int result = m_node->ioctl(VIDIOC_QBUF, buffer);
    if (result >= 0)
        ++m_queued;
    return result;
}

void BWVideoBuffers::unmap(Mapping &mapping)
{
    if (mapping.address)
        m_kernel->unmap(std::exchange(mapping.address, nullptr), mapping.length);
}

void BWVideoBuffers::putBack(uint32_t index)
{
    const std::lock_guard lock(m_mutex);
    m_mappings[index].held = false;
    if (!m_node) {
        unmap(m_mappings[index]);
        return;
    }
    const int result = queue(index);
    if (result < 0 && result != -ENODEV)
        qCWarning(bwDriver) << "A buffer could not be returned to the camera:" << kernelErrorText(result);
    else if (m_queued == 1)
        m_wakeUp->wake();
}
