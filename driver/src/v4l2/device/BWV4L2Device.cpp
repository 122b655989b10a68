// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWV4L2Device.h"

#include "base/BWDriverLog.h"
#include "v4l2/finding/BWNodeAccess.h"

#include <algorithm>
#include <cerrno>
#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

/// How long a node that has nothing to deliver is left alone before we check whether it is still there.
constexpr auto ignoringTime = 100ms;
constexpr auto readingTime = 1s;

} // namespace

BWV4L2Device::BWV4L2Device(BWVideoNode node, BWVideoAbilities abilities, bool bridgeChip, FindButton findButton,
                           BWKernelCalls &kernel)
    : m_node(std::move(node)),
      m_abilities(std::move(abilities)),
      m_name(u"%1 (%2)"_s.arg(m_node.name, QString::fromUtf8(m_node.path))),
      m_findButton(std::move(findButton)),
      m_kernel(kernel),
      m_wakeUp(std::make_shared<BWWakeUp>()),
      m_resolution(m_abilities.current.nearestOf(m_abilities.resolutions())),
      m_controls(m_abilities.controls, m_name),
      m_button(kernel)
{
    if (bridgeChip)
        m_registers.emplace(m_node, kernel);
}

BWV4L2Device::~BWV4L2Device()
{
    stopStreaming();
}

void BWV4L2Device::setEvents(std::function<void()> button, std::function<void(int identifier, double value)> control)
{
    m_pressed = std::move(button);
    m_controls.setMoved(std::move(control));
}

std::vector<BWControlInfo> BWV4L2Device::controls() const
{
    std::vector<BWControlInfo> controls;
    for (const BWVideoControl &control : m_abilities.controls)
        controls.push_back(control.info);
    return controls;
}

BWResolution BWV4L2Device::resolution() const
{
    return m_resolution;
}

void BWV4L2Device::setResolution(BWResolution requested)
{
    m_resolution = requested.nearestOf(m_abilities.resolutions());
}

BWStartProblem BWV4L2Device::startStreaming()
{
    int error = 0;
    m_file = openNode(error);
    if (!m_file)
        return problem(BWVideoStream::problemOf(error));
    // A norm makes some devices forget their size, so it comes first.
    error = applyNorm(*m_file);
    const BWVideoModeChoice choice(m_abilities, m_resolution);
    const BWStartProblem::Kind kind = error == -EBUSY || error == -ENODEV
        ? BWVideoStream::problemOf(error)
        : m_stream.start(*m_file, choice, m_name, m_wakeUp);
    if (kind != BWStartProblem::Kind::None) {
        m_file.reset();
        return problem(kind);
    }
    m_resolution = m_stream.resolution();
    m_controls.watch(*m_file);
    m_button.open(m_findButton().constData());
    m_hasEvents = true;
    m_wasBroken = false;
    m_ignoreNodeUntil = {};
    m_nextReading = Clock::now() + readingTime;
    return {};
}

void BWV4L2Device::stopStreaming()
{
    m_button.close();
    m_stream.stop();
    m_file.reset();
}

BWCaptureDevice::WaitResult BWV4L2Device::waitFrame(std::chrono::milliseconds timeout, BWFrame &frame)
{
    const auto deadline = Clock::now() + timeout;
    while (true) {
        if (Clock::now() >= m_nextReading) {
            m_controls.readMoved(*m_file);
            m_nextReading = Clock::now() + readingTime;
        }
        const Ready ready = waitUntil(deadline);
        for (int presses = ready.button ? m_button.takePresses() : 0; presses > 0; --presses) {
            if (m_pressed)
                m_pressed();
        }
        if (ready.node & POLLPRI)
            m_hasEvents = m_controls.takeEvents(*m_file);
        const WaitResult result = takeFrame(ready.node, frame);
        if (result != WaitResult::Nothing)
            return result;
        // Checked after the frames, so that many interruptions do not hold them back.
        if (m_interrupted.exchange(false) || Clock::now() >= deadline)
            return WaitResult::Nothing;
    }
}

void BWV4L2Device::interrupt()
{
    m_interrupted = true;
    m_wakeUp->wake();
}

double BWV4L2Device::setControl(int identifier, double value)
{
    if (m_file) {
        // A value that others set before must not look as if it came afterwards.
        m_controls.takeEvents(*m_file);
        return m_controls.set(*m_file, identifier, value);
    }
    int error = 0;
    const auto file = openNode(error);
    if (file)
        return m_controls.set(*file, identifier, value);
    if (error != -ENODEV)
        qCWarning(bwDriver).noquote() << m_name << "cannot be opened for a setting:" << kernelErrorText(error);
    return m_controls.value(identifier);
}

void BWV4L2Device::setVideoNorm(int norm)
{
    if (norm < 0 || norm >= static_cast<int>(m_abilities.norms.size()))
        return;
    const auto standard = m_abilities.norms[static_cast<std::size_t>(norm)];
    if (!standard) {
        qCWarning(bwDriver).noquote() << m_name << "has no video norm" << norm;
        return;
    }
    m_norm = standard;
    // Another program that streams now prevents this; the next start sets the norm in any case.
    int error = 0;
    if (const auto file = openNode(error))
        applyNorm(*file);
}

int BWV4L2Device::readRegister(int identifier)
{
    return m_registers ? m_registers->read(identifier) : 0;
}

void BWV4L2Device::writeRegister(int identifier, int value)
{
    if (m_registers)
        m_registers->write(identifier, value);
}

QString BWV4L2Device::registerProblem() const
{
    return m_registers ? m_registers->problem() : QString();
}

std::unique_ptr<const BWKernelFile> BWV4L2Device::openNode(int &error) const
{
    auto file = std::make_unique<const BWKernelFile>(m_kernel, m_node.path.constData());
    BWVideoAbilities device;
    error = file->isOpen() ? device.identify(*file) : file->openError();
    // Node numbers are reused: after an unplug, this one may belong to another camera.
    if (error >= 0 && (device.bus != m_abilities.bus || device.card != m_abilities.card))
        error = -ENODEV;
    return error < 0 ? nullptr : std::move(file);
}

int BWV4L2Device::applyNorm(const BWKernelFile &node) const
{
    if (!m_norm)
        return 0;
    uint64_t standard = *m_norm;
    const int result = node.ioctl(VIDIOC_S_STD, standard);
    if (result < 0)
        qCWarning(bwDriver).noquote() << m_name << "rejects its video norm:" << kernelErrorText(result);
    return result;
}

BWStartProblem BWV4L2Device::problem(BWStartProblem::Kind kind) const
{
    const bool held = kind == BWStartProblem::Kind::InUse;
    return {kind, held ? BWNodeAccess::programHolding(m_node.path) : QString()};
}

BWV4L2Device::Ready BWV4L2Device::waitUntil(Clock::time_point deadline)
{
    const auto now = Clock::now();
    const bool canDeliver = m_stream.canDeliver();
    const bool polled = canDeliver && now >= m_ignoreNodeUntil;
    deadline = std::min(deadline, m_nextReading);
    if (!polled)
        deadline = std::min(deadline, canDeliver ? m_ignoreNodeUntil : now + ignoringTime);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count();
    const short wanted = m_hasEvents ? POLLIN | POLLPRI : POLLIN;
    // Without a buffer to fill, or with a broken stream, a poll of the node returns at once and means nothing.
    pollfd descriptors[] = {
        {polled ? m_file->descriptor() : -1, wanted, 0},
        {m_wakeUp->descriptor(), POLLIN, 0},
        {m_button.descriptor(), POLLIN, 0},
    };
    // An interruption that arrived together with a frame still has to end a wait.
    m_kernel.poll(descriptors, std::size(descriptors), m_interrupted ? 0 : std::max(static_cast<int>(left), 0));
    if (descriptors[1].revents)
        m_wakeUp->clear();
    return {descriptors[0].revents, descriptors[2].revents != 0};
}

BWCaptureDevice::WaitResult BWV4L2Device::takeFrame(short events, BWFrame &frame)
{
    using Taken = BWVideoStream::Taken;
    const short failed = events & (POLLERR | POLLHUP);
    const bool starved = events == 0 && !m_stream.canDeliver();
    const Taken taken = failed || (events & POLLIN) ? m_stream.take(frame) : Taken::Nothing;
    switch (taken) {
    case Taken::Frame:
        return WaitResult::Frame;
    case Taken::BadFrame:
        return WaitResult::BadFrame;
    case Taken::Nothing:
    case Taken::Broken:
        break;
    }
    if (taken == Taken::Nothing && !failed && !starved)
        return WaitResult::Nothing;
    // Not every error is an unplug, and without buffers to fill an unplug is not reported.
    if (isGone())
        return WaitResult::Gone;
    if (!starved) {
        m_ignoreNodeUntil = Clock::now() + ignoringTime;
        if (!std::exchange(m_wasBroken, true))
            qCWarning(bwDriver).noquote() << m_name << "has interrupted its stream";
    }
    return WaitResult::Nothing;
}

bool BWV4L2Device::isGone() const
{
    BWVideoAbilities device;
    return device.identify(*m_file) < 0;
}
