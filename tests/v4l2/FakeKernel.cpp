// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeKernel.h"

#include "v4l2/device/BWVideoFormat.h"

#include <algorithm>
#include <cerrno>
#include <chrono>

using namespace Qt::StringLiterals;

namespace {

constexpr int nodeDescriptor = 1'000'000; // no real one is that large

template <typename Argument>
Argument &as(void *argument)
{
    return *static_cast<Argument *>(argument);
}

} // namespace

void FakeKernel::pushFrame(uint32_t flags, uint32_t bytesUsed)
{
    change([&](State &state) {
        const uint32_t number = state.sequence++;
        if (!m_streaming || state.queued.empty())
            return;
        v4l2_buffer frame{};
        frame.index = state.queued.front();
        state.queued.pop_front();
        m_memory[m_memory.size() - m_buffers + frame.index].assign(frameSize, static_cast<uint8_t>(number));
        frame.bytesused = bytesUsed;
        frame.sequence = number;
        frame.flags = flags;
        frame.timestamp.tv_sec = state.stamp.count() / 1'000'000;
        frame.timestamp.tv_usec = state.stamp.count() % 1'000'000;
        m_done.push_back(frame);
    });
}

void FakeKernel::fail(unsigned long call, const std::deque<int> &errors)
{
    change([&](State &state) { state.faults[call] = errors; });
}

int FakeKernel::open(const char *, int)
{
    const std::lock_guard lock(m_mutex);
    if (const int fault = takeFault(opening))
        return -fault;
    if (m_state.gone)
        return -ENOENT;
    ++m_state.opened;
    return nodeDescriptor;
}

int FakeKernel::close(int)
{
    const std::lock_guard lock(m_mutex);
    --m_state.opened;
    return 0;
}

int FakeKernel::ioctl(int descriptor, unsigned long request, void *argument)
{
    const std::lock_guard lock(m_mutex);
    if (descriptor != nodeDescriptor || m_state.opened == 0)
        return -EBADF;
    if (const int fault = takeFault(request))
        return -fault;
    if (m_state.gone)
        return -ENODEV;
    const auto scripted = m_state.answers.find(request);
    return scripted == m_state.answers.end() ? answer(request, argument) : scripted->second(argument);
}

int FakeKernel::answer(unsigned long request, void *argument)
{
    State &state = m_state;
    auto *buffer = static_cast<v4l2_buffer *>(argument);
    auto *wanted = static_cast<v4l2_requestbuffers *>(argument);
    switch (request) {
    case VIDIOC_QUERYCAP:
        state.bus.copy(reinterpret_cast<char *>(as<v4l2_capability>(argument).bus_info), 31);
        as<v4l2_capability>(argument).capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
        return 0;
    case VIDIOC_S_FMT:
        state.log += u"S_FMT "_s + BWVideoFormat::name(as<v4l2_format>(argument).fmt.pix.pixelformat);
        return m_buffers > 0 ? -EBUSY : 0;
    case VIDIOC_S_PARM:
        state.log += u"S_PARM %1"_s.arg(as<v4l2_streamparm>(argument).parm.capture.timeperframe.denominator);
        return 0;
    case VIDIOC_S_STD:
        state.log += u"S_STD %1"_s.arg(as<v4l2_std_id>(argument), 0, 16);
        return m_streaming ? -EBUSY : 0;
    case VIDIOC_S_EXT_CTRLS:
    case VIDIOC_G_EXT_CTRLS:
        return accessControl(as<v4l2_ext_controls>(argument).controls[0], request == VIDIOC_S_EXT_CTRLS);
    case VIDIOC_REQBUFS:
        if (m_streaming)
            return -EBUSY;
        m_buffers = wanted->count = std::min(wanted->count, state.mostBuffers);
        m_memory.resize(m_memory.size() + m_buffers);
        return 0;
    case VIDIOC_QUERYBUF:
        buffer->length = frameSize;
        buffer->m.offset = buffer->index;
        return 0;
    case VIDIOC_QBUF:
        state.queued.push_back(buffer->index);
        return buffer->index < m_buffers ? 0 : -EINVAL;
    case VIDIOC_DQBUF:
        if (m_done.empty())
            return -EAGAIN;
        *buffer = m_done.front();
        m_done.pop_front();
        return 0;
    case VIDIOC_STREAMON:
    case VIDIOC_STREAMOFF:
        m_streaming = request == VIDIOC_STREAMON;
        state.log += m_streaming ? u"STREAMON"_s : u"STREAMOFF"_s;
        if (!m_streaming) {
            state.queued.clear();
            m_done.clear();
        }
        return 0;
    case VIDIOC_SUBSCRIBE_EVENT:
        return 0;
    case VIDIOC_DQEVENT:
        if (state.events.empty())
            return -ENOENT;
        as<v4l2_event>(argument) = state.events.front();
        state.events.pop_front();
        return 0;
    default:
        return -ENOTTY;
    }
}

int FakeKernel::accessControl(v4l2_ext_control &wanted, bool set)
{
    const auto found = m_state.controls.find(wanted.id);
    if (found == m_state.controls.end())
        return -EINVAL;
    Control &control = found->second;
    if (set) {
        if (control.master && m_state.controls.at(control.master).value != control.manual)
            return -EACCES;
        const int32_t value = wanted.value;
        if (!control.menu.empty() && std::find(control.menu.begin(), control.menu.end(), value) == control.menu.end())
            return -EINVAL;
        control.value = std::clamp(value, control.min, control.max);
        // The control that it holds or releases reports its present value.
        for (const auto &[id, other] : m_state.controls) {
            if (other.master == wanted.id)
                report(id);
        }
    }
    wanted.value = control.value;
    return 0;
}

void FakeKernel::report(uint32_t id)
{
    v4l2_event event{};
    event.type = V4L2_EVENT_CTRL;
    event.id = id;
    event.u.ctrl.changes = V4L2_EVENT_CTRL_CH_VALUE;
    event.u.ctrl.value = m_state.controls.at(id).value;
    m_state.events.push_back(event);
}

ssize_t FakeKernel::read(int, void *, std::size_t)
{
    return -EBADF; // the driver reads only buttons in this way
}

int FakeKernel::poll(pollfd *descriptors, nfds_t, int timeout)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeout);
    pollfd &node = descriptors[0];
    while (true) {
        {
            const std::lock_guard lock(m_mutex);
            m_changed.clear();
            ++m_state.polls;
            m_state.patience = timeout;
            const int events = (m_done.empty() ? 0 : POLLIN) | (m_state.events.empty() ? 0 : POLLPRI)
                | (m_state.broken ? POLLERR : 0) | (m_state.gone ? POLLERR | POLLHUP : 0);
            node.revents = node.fd < 0 ? 0 : static_cast<short>(events & (node.events | POLLERR | POLLHUP));
        }
        const bool ready = node.revents;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd real[] = {descriptors[1], {m_changed.descriptor(), POLLIN, 0}};
        ::poll(real, 2, ready ? 0 : std::max(static_cast<int>(left), 0));
        descriptors[1].revents = real[0].revents;
        if (ready || real[0].revents || Clock::now() >= deadline)
            return 1;
    }
}

void *FakeKernel::map(int, std::size_t, off_t offset, int &error)
{
    const std::lock_guard lock(m_mutex);
    error = takeFault(mapping);
    if (error)
        return nullptr;
    ++m_state.mapped;
    auto &memory = m_memory[m_memory.size() - m_buffers + static_cast<std::size_t>(offset)];
    memory.resize(frameSize);
    return memory.data();
}

void FakeKernel::unmap(void *, std::size_t)
{
    const std::lock_guard lock(m_mutex);
    --m_state.mapped;
}

int FakeKernel::takeFault(unsigned long request)
{
    std::deque<int> &faults = m_state.faults[request];
    if (faults.empty())
        return 0;
    const int fault = faults.front();
    faults.pop_front();
    return fault;
}
