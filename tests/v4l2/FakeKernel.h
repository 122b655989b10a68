// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "v4l2/BWKernelCalls.h"
#include "v4l2/BWWakeUp.h"

#include <chrono>
#include <deque>
#include <functional>
#include <linux/videodev2.h>
#include <map>
#include <mutex>
#include <QStringList>
#include <vector>

/// One camera with its node "/dev/video" and no button, as a kernel without any hardware. What the driver sets is
/// logged; any call can be made to fail. Any thread.
class FakeKernel : public BWKernelCalls {
public:
    static constexpr uint32_t frameSize = 640 * 480 * 2;
    /// Stand for calls other than ioctl.
    static constexpr unsigned long opening = 1;
    static constexpr unsigned long mapping = 2;

    struct Control {
        int32_t min;
        int32_t max;
        int32_t value;
        std::vector<int32_t> menu{};
        uint32_t master = 0; ///< it is refused unless that control has the value below
        int32_t manual = 0;
    };

    /// All of it may be changed, and looked at, inside change() only.
    struct State {
        std::string bus = "usb-1";
        std::map<uint32_t, Control> controls;
        uint32_t mostBuffers = 8;
        uint32_t sequence = 0; ///< of the next frame
        std::chrono::microseconds stamp{0}; ///< of the next frame, whatever its flags say of the clock
        std::map<unsigned long, std::deque<int>> faults; ///< see fail()
        std::map<unsigned long, std::function<int(void *)>> answers; ///< to ioctls unknown to the fake
        bool gone = false;
        bool broken = false; ///< poll reports an error, whatever the calls return
        std::deque<v4l2_event> events;

        QStringList log; ///< "S_FMT YUYV", "STREAMON" ...
        int opened = 0; ///< descriptors
        int mapped = 0;
        int polls = 0;
        int patience = 0; ///< the time that the last poll would have waited
        std::deque<uint32_t> queued;
    };

    template <typename Function>
    auto change(Function function)
    {
        const std::lock_guard lock(m_mutex);
        m_changed.wake();
        return function(m_state);
    }
    /// Captures a frame whose bytes all equal its number; it is lost if no buffer is queued.
    void pushFrame(uint32_t flags = 0, uint32_t bytesUsed = frameSize);
    /// The next of these calls fail with these errors; 0 lets one succeed.
    void fail(unsigned long call, const std::deque<int> &errors);

    int open(const char *path, int flags) override;
    int close(int descriptor) override;
    int ioctl(int descriptor, unsigned long request, void *argument) override;
    ssize_t read(int descriptor, void *bytes, std::size_t size) override;
    int poll(pollfd *descriptors, nfds_t count, int timeout) override;
    void *map(int descriptor, std::size_t length, off_t offset, int &error) override;
    void unmap(void *address, std::size_t length) override;

private:
    int answer(unsigned long request, void *argument);
    int accessControl(v4l2_ext_control &wanted, bool set);
    void report(uint32_t id);
    int takeFault(unsigned long request);

    std::mutex m_mutex;
    BWWakeUp m_changed;
    State m_state;
    std::deque<std::vector<uint8_t>> m_memory; ///< of all streams ever: what was mapped once stays readable
    uint32_t m_buffers = 0; ///< of this stream, the last ones of the memory
    bool m_streaming = false;
    std::deque<v4l2_buffer> m_done;
};
