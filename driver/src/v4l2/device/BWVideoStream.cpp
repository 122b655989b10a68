// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWVideoStream.h"

#include "base/BWDriverLog.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

constexpr uint32_t kernelBuffers = 8;

using TimePoint = std::chrono::steady_clock::time_point;

TimePoint timeOf(const v4l2_buffer &buffer)
{
    const TimePoint now = std::chrono::steady_clock::now();
    if ((buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) != V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC)
        return now;
    const TimePoint stamp{std::chrono::seconds(buffer.timestamp.tv_sec)
                          + std::chrono::microseconds(buffer.timestamp.tv_usec)};
    // Some devices set wrong times, or none.
    const bool plausible = stamp <= now && stamp > now - std::chrono::seconds(5);
    return plausible ? stamp : now;
}

} // namespace

BWStartProblem::Kind BWVideoStream::start(const BWKernelFile &node, const BWVideoModeChoice &choice,
                                          const QString &name, const std::shared_ptr<const BWWakeUp> &wakeUp)
{
    using Kind = BWStartProblem::Kind;
    Kind worst = Kind::Failed;
    for (std::size_t i = 0; i < choice.candidates().size(); ++i) {
        const BWVideoMode &mode = choice.candidates()[i];
        const Outcome outcome = tryMode(node, mode, wakeUp);
        if (outcome.result >= 0) {
            qCInfo(bwDriver).noquote() << name << "streams" << choice.reason(i);
            if (resolution() != mode.resolution)
                qCInfo(bwDriver).noquote() << name << "delivers" << resolution().resolutionString();
            return Kind::None;
        }
        stop();
        const Kind problem = problemOf(outcome.result);
        if (problem == Kind::NoBandwidth)
            worst = problem; // the other formats of that size may need less
        else if (problem != Kind::Failed)
            return problem;
        qCWarning(bwDriver).noquote() << name << "does not stream" << BWVideoFormat::name(mode.fourcc)
                                      << mode.resolution.resolutionString() << "-" << outcome.call << "says"
                                      << kernelErrorText(outcome.result);
    }
    if (choice.candidates().empty())
        qCWarning(bwDriver).noquote() << name << "has no picture format that can be shown";
    return worst;
}

void BWVideoStream::stop()
{
    if (const auto buffers = std::exchange(m_buffers, nullptr))
        buffers->end();
}

BWVideoStream::Taken BWVideoStream::take(BWFrame &frame)
{
    v4l2_buffer buffer;
    const int result = m_buffers->take(buffer);
    if (result == -EAGAIN || result == -EINTR)
        return Taken::Nothing;
    if (result < 0)
        return Taken::Broken;
    const std::size_t bytesUsed = m_buffers->bytesUsed(buffer);
    BWFrameInfo info = m_format.frame(m_buffers->data(buffer), bytesUsed);
    info.timestamp = timeOf(buffer);
    info.sequence = number(buffer.sequence);
    frame = m_buffers->frame(buffer, info);
    const bool good = !(buffer.flags & V4L2_BUF_FLAG_ERROR) && m_format.fits(bytesUsed);
    return good ? Taken::Frame : Taken::BadFrame;
}

BWStartProblem::Kind BWVideoStream::problemOf(int error)
{
    switch (-error) {
    case 0:
        return BWStartProblem::Kind::None;
    case EBUSY:
        return BWStartProblem::Kind::InUse;
    case ENOSPC:
        return BWStartProblem::Kind::NoBandwidth;
    case EACCES:
    case EPERM:
        return BWStartProblem::Kind::NoPermission;
    case ENODEV:
    case ENXIO:
    case ENOENT:
        return BWStartProblem::Kind::Gone;
    default:
        return BWStartProblem::Kind::Failed;
    }
}

BWVideoStream::Outcome BWVideoStream::tryMode(const BWKernelFile &node, const BWVideoMode &mode,
                                              const std::shared_ptr<const BWWakeUp> &wakeUp)
{
    if (const Outcome outcome = setMode(node, mode); outcome.result < 0)
        return outcome;
    m_lastNumber.reset();
    m_buffers = std::make_shared<BWVideoBuffers>(wakeUp);
    if (const int result = m_buffers->begin(node, kernelBuffers); result < 0)
        return {result, "REQBUFS"};
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    return {node.ioctl(VIDIOC_STREAMON, type), "STREAMON"};
}

BWVideoStream::Outcome BWVideoStream::setMode(const BWKernelFile &node, const BWVideoMode &mode)
{
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.width = static_cast<uint32_t>(mode.resolution.width());
    format.fmt.pix.height = static_cast<uint32_t>(mode.resolution.height());
    format.fmt.pix.pixelformat = mode.fourcc;
    format.fmt.pix.field = V4L2_FIELD_ANY;
    if (const int result = node.ioctl(VIDIOC_S_FMT, format); result < 0)
        return {result, "S_FMT"};
    // A device that cannot do what is requested sets something else, without an error.
    if (format.fmt.pix.pixelformat != mode.fourcc || format.fmt.pix.width > 32768 || format.fmt.pix.height > 32768)
        return {-EINVAL, "S_FMT"};
    m_format = BWVideoFormat(format.fmt.pix);

    v4l2_streamparm rate{};
    rate.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    rate.parm.capture.timeperframe = {mode.interval.numerator, mode.interval.denominator};
    const int result = mode.interval.numerator > 0 ? node.ioctl(VIDIOC_S_PARM, rate) : 0;
    // Better the wrong rate than no picture.
    const bool fatal = result < 0 && problemOf(result) != BWStartProblem::Kind::Failed;
    return {fatal ? result : 0, "S_PARM"};
}

uint64_t BWVideoStream::number(uint32_t sequence)
{
    if (!m_lastNumber)
        m_lastNumber = sequence;
    else {
        // The kernel's counter is 32 bits wide and wraps. If it does not advance, it does not count.
        const auto forward = static_cast<int32_t>(sequence - static_cast<uint32_t>(*m_lastNumber));
        *m_lastNumber += static_cast<uint64_t>(std::max(forward, 1));
    }
    return *m_lastNumber;
}
