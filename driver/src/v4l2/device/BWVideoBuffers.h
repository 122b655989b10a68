#pragma once

#include "BWACUDriver/BWFrame.h"
#include "v4l2/BWKernelCalls.h"
#include "v4l2/BWWakeUp.h"

#include <linux/videodev2.h>
#include <mutex>
#include <vector>

/// The buffers of one stream, which the device fills and frames look into without a copy.
///
/// A buffer that a frame holds is queued again by whichever thread lets go of it last. After end() nothing is queued
/// any more, into this stream or a later one; what frames still hold stays mapped until they let go, and the kernel
/// lends the device to others meanwhile. Held by a shared pointer, also by the frames.
class BWVideoBuffers : public std::enable_shared_from_this<BWVideoBuffers> {
public:
    /// `wakeUp` is woken when the device, which had run out of buffers, has one again.
    explicit BWVideoBuffers(std::shared_ptr<const BWWakeUp> wakeUp) : m_wakeUp(std::move(wakeUp)) { }
    ~BWVideoBuffers();
    BWVideoBuffers(const BWVideoBuffers &) = delete;
    BWVideoBuffers &operator=(const BWVideoBuffers &) = delete;

    // Capture thread.
    /// Asks for `wished` buffers, for fewer where memory is short, and queues them all. `node` must outlive end().
    int begin(const BWKernelFile &node, uint32_t wished);
    /// Stops the stream and gives the buffers back to the kernel.
    void end();

    /// -EAGAIN while none is filled. What was taken belongs to a frame, or must be put back.
    int take(v4l2_buffer &buffer);
    const uint8_t *data(const v4l2_buffer &buffer) const;
    /// Not more than the buffer holds.
    std::size_t bytesUsed(const v4l2_buffer &buffer) const;
    /// A frame that puts the buffer back when its last holder lets go.
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
    // Guarded; nobody is called but the kernel while it is locked.
    const BWKernelFile *m_node = nullptr; ///< null once the stream has ended
    std::vector<Mapping> m_mappings; ///< grows in begin() only
    int m_queued = 0;
};
