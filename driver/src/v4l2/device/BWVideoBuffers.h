// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "v4l2/BWKernelCalls.h"
#include "v4l2/BWWakeUp.h"

#include <linux/videodev2.h>
#include <mutex>
#include <vector>

/// The buffers of one stream, which the device fills and frames show without a copy.
///
/// The thread that releases a frame last queues its buffer again. After end() nothing is queued any more, into this
/// stream or a later one; buffers of held frames stay mapped until they are released, and meanwhile other programs can
/// use the device. Held by shared pointers, the frames' among them.
class BWVideoBuffers : public std::enable_shared_from_this<BWVideoBuffers> {
public:
    /// `wakeUp` is woken when the device has a buffer again after running out of them.
    explicit BWVideoBuffers(std::shared_ptr<const BWWakeUp> wakeUp) : m_wakeUp(std::move(wakeUp)) { }
    ~BWVideoBuffers();
    BWVideoBuffers(const BWVideoBuffers &) = delete;
    BWVideoBuffers &operator=(const BWVideoBuffers &) = delete;

    // Capture thread.
    /// Requests `wanted` buffers, fewer if memory is short, and queues them all. `node` must outlive end().
    int begin(const BWKernelFile &node, uint32_t wanted);
    /// Stops the stream and gives the buffers back to the kernel.
    void end();

    /// -EAGAIN if none is filled. Only the frame made of it queues a buffer again.
    int take(v4l2_buffer &buffer);
    const uint8_t *data(const v4l2_buffer &buffer) const;
    /// Not more than the buffer holds.
    std::size_t bytesUsed(const v4l2_buffer &buffer) const;
    /// A frame that queues the buffer again when its last holder releases it.
    BWFrame frame(const v4l2_buffer &buffer, const BWFrameInfo &info);

    /// Whether the device has a buffer to fill.
    bool anyQueued() const;

private:
    struct Mapping {
        void *address = nullptr;
        std::size_t length = 0;
        bool held = false;
    };

    int request(uint32_t count, uint32_t &granted);
    int map(uint32_t index, Mapping &mapping);
    int queue(uint32_t index);
    void unmap(Mapping &mapping);
    void putBack(uint32_t index);

    const std::shared_ptr<const BWWakeUp> m_wakeUp;
    BWKernelCalls *m_kernel = nullptr;
    mutable std::mutex m_mutex;
    // Guarded by the mutex; while it is locked only the kernel is called.
    const BWKernelFile *m_node = nullptr; ///< null once the stream has ended
    std::vector<Mapping> m_mappings; ///< grows in begin() only
    int m_queued = 0;
};
